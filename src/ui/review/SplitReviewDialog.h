#pragma once

#include "ui/review/WaveformOverview.h"

#include "ui/widgets/HouseDialog.h"

#include <QDialog>

#include <cstdint>
#include <vector>

class QLabel;
class QPushButton;
class QSpinBox;

namespace waxline::ui {

// The review of a side's splits before the tracks are named: the overview with its markers,
// what is selected and what is doubtful, the track count from the sleeve, Play, Apply and
// Cancel. It opens at once on the live splits and "reading the side"; the controller fills in
// the waveform and hands over the proposal when its analysis is done. Apply is offered when the
// markers differ from the live splits. Main thread only.
class SplitReviewDialog : public HouseDialog {
    Q_OBJECT
public:
    static constexpr int kMaxTracks = 40;

    explicit SplitReviewDialog(QWidget* parent = nullptr);

    WaveformOverview& overview() { return *wave; }
    QSpinBox& trackCountBox() { return *count; }
    QPushButton& applyButton() { return *apply; }
    QPushButton& cancelButton() { return *cancel; }
    QPushButton& playButton() { return *play; }
    QPushButton& addButton() { return *add; }
    QPushButton& removeButton() { return *remove; }

    // The side and the splits it has now; shows them as markers while the side is read.
    void setSide(int64_t frames, unsigned sampleRate, const std::vector<int64_t>& liveSplits);
    // Reading: the overview fills in and the proposal is not there yet.
    void setReading(bool reading);
    bool reading() const { return isReading; }
    // The splitter's proposal replaces the markers; the sleeve's count follows it.
    void setProposal(const std::vector<SplitMarker>& markers);
    // Boundaries the splitter found but is not sure of: drawn faintly and named in the notice,
    // while the markers stay where they are. Adding a marker there takes one up.
    void setSuggestions(const std::vector<int64_t>& frames);
    const std::vector<int64_t>& suggestions() const { return suggested; }

    std::vector<int64_t> boundaries() const;
    bool changed() const;
    QString noticeText() const;
    QString positionText() const;

Q_SIGNALS:
    // The sleeve's count was typed or stepped: the controller redoes the proposal.
    void trackCountChosen(int tracks);
    void playRequested(int64_t frame);
    void applyRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void markersEdited();
    void updatePosition();
    void updateNotice();
    void playSelected();
    void addAtView();

    WaveformOverview* wave = nullptr;
    QLabel* intro = nullptr;
    QLabel* position = nullptr;
    QLabel* notice = nullptr;
    QLabel* countLabel = nullptr;
    QSpinBox* count = nullptr;
    QPushButton* add = nullptr;
    QPushButton* remove = nullptr;
    QPushButton* play = nullptr;
    QPushButton* apply = nullptr;
    QPushButton* cancel = nullptr;
    std::vector<int64_t> live;
    std::vector<int64_t> suggested;
    bool isReading = false;
    bool settingCount = false;
};

} // namespace waxline::ui
