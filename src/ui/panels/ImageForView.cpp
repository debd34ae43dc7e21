#include "ui/panels/ImageForView.h"

#include <cstdio>

namespace waxline::ui {

Picture ImageForView(unsigned panel) {
    switch (panel) {
    case 1:
    case 4:
    case 5:
    case 7:
    case 8:
    case 9:
    case 10:
    case 11:
        return Picture::named(QStringLiteral("dlg_PlainBackgroundWithButtons"));
    case 2:
        return Picture::named(QStringLiteral("dlg_StartRecording"));
    case 3:
        return Picture::named(QStringLiteral("dlg_Recording"));
    case 6:
        return Picture::named(QStringLiteral("dlg_Question"));
    case 12:
        return Picture::named(QStringLiteral("dlg_Tape"));
    default:
        std::fputs("(_viewImage == NULL)\n", stderr);
        return {};
    }
}

} // namespace waxline::ui
