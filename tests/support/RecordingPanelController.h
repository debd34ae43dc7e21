#pragma once

#include "ui/PanelController.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <vector>

namespace waxline::test {

// A PanelController that writes down every call: its name, its sender and its arguments.
class RecordingPanelController : public ui::PanelController {
public:
    struct Call {
        QString name;
        QObject* sender = nullptr;
        bool normalization = false;
        bool clickRemoval = false;
        float gainDb = 0.0f;
    };

    std::vector<Call> calls;

    QStringList names() const {
        QStringList list;
        for (const Call& call : calls)
            list << call.name;
        return list;
    }
    void clear() { calls.clear(); }

    void doNextButton1(QObject* s) override { add("doNextButton1", s); }
    void doBackButtonSelectDevice(QObject* s) override { add("doBackButtonSelectDevice", s); }
    void doNextButtonSelectDevice(QObject* s) override { add("doNextButtonSelectDevice", s); }
    void doBackButtonSelectTape(QObject* s) override { add("doBackButtonSelectTape", s); }
    void doNextButtonSelectTape(QObject* s) override { add("doNextButtonSelectTape", s); }
    void doBackButton2(QObject* s) override { add("doBackButton2", s); }
    void doRecordButton(QObject* s, bool normalization, bool clickRemoval) override {
        calls.push_back({QStringLiteral("doRecordButton"), s, normalization, clickRemoval});
    }
    void doBackButton3(QObject* s) override { add("doBackButton3", s); }
    void doNextButton3(QObject* s) override { add("doNextButton3", s); }
    void doNewTrackButton(QObject* s) override { add("doNewTrackButton", s); }
    void doBackButton4(QObject* s) override { add("doBackButton4", s); }
    void doNextButton4(QObject* s) override { add("doNextButton4", s); }
    void doBackButton5(QObject* s) override { add("doBackButton5", s); }
    void doNextButton5(QObject* s) override { add("doNextButton5", s); }
    void doBackButton6(QObject* s) override { add("doBackButton6", s); }
    void doNextButton6(QObject* s) override { add("doNextButton6", s); }
    void doBackButton7(QObject* s) override { add("doBackButton7", s); }
    void doNextButton7(QObject* s) override { add("doNextButton7", s); }
    void doBackButton8(QObject* s) override { add("doBackButton8", s); }
    void doNextButton8(QObject* s) override { add("doNextButton8", s); }
    void doBackButton9(QObject* s) override { add("doBackButton9", s); }
    void doNextButton9(QObject* s) override { add("doNextButton9", s); }
    void doBackButton10(QObject* s) override { add("doBackButton10", s); }
    void doNextButton10(QObject* s) override { add("doNextButton10", s); }
    void doReviewSplits(QObject* s) override { add("doReviewSplits", s); }
    void doFindAlbum(QObject* s) override { add("doFindAlbum", s); }
    void doReturnToRecording(QObject* s) override { add("doReturnToRecording", s); }
    void doRetryExport(QObject* s) override { add("doRetryExport", s); }
    void doKeepForLater(QObject* s) override { add("doKeepForLater", s); }
    void doCloseButton(QObject* s) override { add("doCloseButton", s); }
    void doCloseApplication(QObject* s) override { add("doCloseApplication", s); }
    void showHelp(QObject* s) override { add("showHelp", s); }
    void setRecordingGainDb(float gainDb) override {
        calls.push_back({QStringLiteral("setRecordingGainDb"), nullptr, false, false, gainDb});
    }

private:
    void add(const char* name, QObject* sender) {
        calls.push_back({QString::fromLatin1(name), sender});
    }
};

} // namespace waxline::test
