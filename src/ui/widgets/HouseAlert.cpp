#include "ui/widgets/HouseAlert.h"

#include "ui/Catalogue.h"
#include "ui/widgets/Picture.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <set>

namespace waxline::ui {

namespace {

constexpr const char* alertStyle = R"(
QLabel#message { font-size: 14px; }
QLabel#informative { color: #5A4636; }
QPushButton { min-width: 72px; }
)";

QString iconName(HouseAlert::Kind kind) {
    switch (kind) {
    case HouseAlert::Kind::Question:
        return QStringLiteral("alert_Question");
    case HouseAlert::Kind::Notice:
        return QStringLiteral("alert_Notice");
    case HouseAlert::Kind::Warning:
        break;
    }
    return QStringLiteral("alert_Warning");
}

// The caption's own mnemonic letter, lower case, or a null char when it has none.
QChar ownMnemonic(const QString& caption) {
    for (qsizetype i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != QLatin1Char('&'))
            continue;
        if (caption[i + 1].isLetterOrNumber())
            return caption[i + 1].toLower();
        if (caption[i + 1] == QLatin1Char('&'))
            ++i;
    }
    return {};
}

} // namespace

QStringList withMnemonics(const QStringList& captions) {
    std::set<QChar> taken;
    for (const QString& caption : captions)
        if (const QChar own = ownMnemonic(caption); !own.isNull())
            taken.insert(own);
    QStringList marked;
    for (const QString& caption : captions) {
        QString result = caption;
        if (ownMnemonic(caption).isNull()) {
            // A literal "&" is written "&&" in a caption before a letter is marked.
            result.replace(QLatin1Char('&'), QStringLiteral("&&"));
            // Words' first letters read best as keys; any other letter or digit will do.
            qsizetype at = -1;
            for (int pass = 0; pass < 2 && at < 0; ++pass)
                for (qsizetype i = 0; i < result.size() && at < 0; ++i) {
                    const QChar c = result[i];
                    const bool wordStart = i == 0 || !result[i - 1].isLetterOrNumber();
                    if (c.isLetterOrNumber() && (pass == 1 || wordStart) &&
                        taken.insert(c.toLower()).second)
                        at = i;
                }
            if (at >= 0)
                result.insert(at, QLatin1Char('&'));
        }
        marked << result;
    }
    return marked;
}

HouseAlert::HouseAlert(Kind kind, const QString& title, const QString& message,
                       const QString& informative, const QStringList& captions, int defaultButton,
                       int escapeButton, QWidget* parent)
    : HouseDialog(title, QString::fromLatin1(alertStyle), parent)
    , escape(escapeButton)
    , choice(escapeButton) {
    setModal(true);
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                   Qt::WindowCloseButtonHint);
    setBodyMargins(24, 18, 18);
    body()->setSpacing(16);

    auto messageRow = new QHBoxLayout;
    messageRow->setSpacing(18);
    auto icon = new QLabel(this);
    icon->setObjectName(QStringLiteral("icon"));
    const Picture picture = Picture::named(iconName(kind));
    // Drawn at the screen's own scale, so the icon stays sharp at 2.
    icon->setPixmap(QPixmap::fromImage(picture.image(devicePixelRatioF())));
    icon->setFixedSize(picture.size());
    messageRow->addWidget(icon, 0, Qt::AlignTop);

    auto texts = new QVBoxLayout;
    texts->setSpacing(8);
    auto messageLabel = new QLabel(message, this);
    messageLabel->setObjectName(QStringLiteral("message"));
    messageLabel->setTextFormat(Qt::RichText);
    messageLabel->setWordWrap(true);
    messageLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    texts->addWidget(messageLabel);
    if (!informative.isEmpty()) {
        auto informativeLabel = new QLabel(informative, this);
        informativeLabel->setObjectName(QStringLiteral("informative"));
        informativeLabel->setTextFormat(Qt::RichText);
        informativeLabel->setWordWrap(true);
        texts->addWidget(informativeLabel);
    }
    messageRow->addLayout(texts, 1);
    body()->addLayout(messageRow);
    body()->addStretch(1);

    auto buttonRow = new QHBoxLayout;
    buttonRow->setSpacing(10);
    buttonRow->addStretch(1);
    const QStringList marked = withMnemonics(captions);
    for (int i = 0; i < int(marked.size()); ++i) {
        auto button = new QPushButton(marked[i], this);
        button->setAccessibleName(withoutMnemonic(marked[i]));
        connect(button, &QPushButton::clicked, this, [this, i] {
            choice = i;
            accept();
        });
        buttons.push_back(button);
        buttonRow->addWidget(button);
    }
    if (defaultButton >= 0 && defaultButton < int(buttons.size())) {
        QPushButton* primary = buttons[size_t(defaultButton)];
        primary->setObjectName(QStringLiteral("primary"));
        primary->setDefault(true);
        primary->setFocus();
    }
    body()->addLayout(buttonRow);

    // As wide as the buttons need and no narrower than a comfortable line; as tall as the
    // wrapped message then needs, so nothing is cut off in any language.
    ensurePolished();
    const QMargins margins = body()->contentsMargins();
    const int width =
        std::max(480, buttonRow->sizeHint().width() + margins.left() + margins.right());
    setFixedSize(width, layout()->heightForWidth(width));
}

void HouseAlert::reject() {
    choice = escape;
    HouseDialog::reject();
}

} // namespace waxline::ui
