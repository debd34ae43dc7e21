#include "ui/review/SplitReviewDialog.h"

#include "ui/Catalogue.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace waxline::ui {

namespace {

// The panels' palette on plain widgets: a walnut header, the cream body, amber for the action.
const char* const reviewStyle = R"(
QLabel#position { font-size: 13px; font-weight: bold; }
QLabel#notice { color: #8A3A22; font-size: 12px; }
QSpinBox { font-size: 13px; min-height: 24px; }
)";

QPushButton* makeButton(const char* key, QWidget* parent) {
    auto button = new QPushButton(textOrKey(key), parent);
    button->setAccessibleName(withoutMnemonic(plainTextOf(button->text())));
    return button;
}

} // namespace

SplitReviewDialog::SplitReviewDialog(QWidget* parent)
    : HouseDialog(textOrKey("IDS_REVIEW_TITLE"), QString::fromLatin1(reviewStyle), parent) {
    setModal(true);
    setWindowModality(Qt::WindowModal);
    // The window's own size, so the review sits over the panel it came from.
    setFixedSize(720, 480);
    auto body = this->body();
    setBodyMargins(24, 14, 18);
    body->setSpacing(8);

    intro = new QLabel(textOrKey("IDS_REVIEW_TEXT"), this);
    intro->setWordWrap(true);
    body->addWidget(intro);

    wave = new WaveformOverview(this);
    wave->setMinimumHeight(150);
    wave->setToolTip(plainTextOf(textOrKey("IDS_REVIEW_ZOOM_HINT")));
    body->addWidget(wave, 1);

    position = new QLabel(this);
    position->setObjectName(QStringLiteral("position"));
    body->addWidget(position);

    notice = new QLabel(this);
    notice->setObjectName(QStringLiteral("notice"));
    notice->setWordWrap(true);
    notice->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // Room for the notice is kept whether or not there is one, so the waveform keeps its height
    // when the side has been read; a notice longer than three lines still shows whole.
    notice->setMinimumHeight(3 * notice->fontMetrics().lineSpacing());
    body->addWidget(notice);

    auto editRow = new QHBoxLayout;
    editRow->setSpacing(8);
    add = makeButton("IDS_REVIEW_ADD", this);
    remove = makeButton("IDS_REVIEW_REMOVE", this);
    play = makeButton("IDS_REVIEW_PLAY", this);
    editRow->addWidget(add);
    editRow->addWidget(remove);
    editRow->addWidget(play);
    editRow->addStretch(1);
    countLabel = new QLabel(textOrKey("IDS_REVIEW_TRACKS_LABEL"), this);
    count = new QSpinBox(this);
    count->setRange(1, kMaxTracks);
    count->setKeyboardTracking(false);
    count->setMinimumWidth(64);
    countLabel->setBuddy(count);
    editRow->addWidget(countLabel);
    editRow->addWidget(count);
    body->addLayout(editRow);

    auto footer = new QHBoxLayout;
    footer->setSpacing(12);
    footer->addStretch(1);
    cancel = makeButton("IDS_REVIEW_CANCEL", this);
    apply = makeButton("IDS_REVIEW_APPLY", this);
    apply->setObjectName(QStringLiteral("primary"));
    cancel->setMinimumWidth(120);
    apply->setMinimumWidth(120);
    footer->addWidget(cancel);
    footer->addWidget(apply);
    body->addLayout(footer);

    count->setAccessibleName(withoutMnemonic(plainTextOf(countLabel->text())));
    // Return applies from anywhere but the count, which it only confirms.
    apply->setDefault(true);
    setTabOrder(wave, add);
    setTabOrder(add, remove);
    setTabOrder(remove, play);
    setTabOrder(play, count);
    setTabOrder(count, cancel);
    setTabOrder(cancel, apply);

    connect(wave, &WaveformOverview::markersChanged, this, &SplitReviewDialog::markersEdited);
    connect(wave, &WaveformOverview::selectionChanged, this, [this] { updatePosition(); });
    connect(wave, &WaveformOverview::playRequested, this, &SplitReviewDialog::playRequested);
    connect(add, &QPushButton::clicked, this, &SplitReviewDialog::addAtView);
    connect(remove, &QPushButton::clicked, this, [this] {
        wave->removeSelected();
        wave->setFocus();
    });
    connect(play, &QPushButton::clicked, this, &SplitReviewDialog::playSelected);
    connect(count, &QSpinBox::valueChanged, this, [this](int tracks) {
        if (!settingCount)
            emit trackCountChosen(tracks);
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(apply, &QPushButton::clicked, this, &SplitReviewDialog::applyRequested);

    setReading(false);
    markersEdited();
    wave->setFocus();
}

void SplitReviewDialog::setSide(int64_t frames, unsigned sampleRate,
                                const std::vector<int64_t>& liveSplits) {
    live = liveSplits;
    wave->setSide(frames, sampleRate);
    std::vector<SplitMarker> markers;
    for (int64_t frame : live)
        markers.push_back({frame, 1.0f});
    wave->setMarkers(std::move(markers));
}

void SplitReviewDialog::setReading(bool reading) {
    isReading = reading;
    // The count redoes the splitter's proposal, which needs the whole side read.
    count->setEnabled(!reading);
    countLabel->setEnabled(!reading);
    wave->setPendingText(reading ? textOrKey("IDS_REVIEW_READING") : QString());
    updatePosition();
}

void SplitReviewDialog::setProposal(const std::vector<SplitMarker>& markers) {
    suggested.clear();
    wave->setSuggestions({});
    wave->setMarkers(markers);
}

void SplitReviewDialog::setSuggestions(const std::vector<int64_t>& frames) {
    suggested = frames;
    wave->setSuggestions(frames);
    updateNotice();
}

std::vector<int64_t> SplitReviewDialog::boundaries() const {
    std::vector<int64_t> frames;
    for (const SplitMarker& m : wave->markers())
        frames.push_back(m.frame);
    return frames;
}

bool SplitReviewDialog::changed() const {
    return boundaries() != live;
}

QString SplitReviewDialog::noticeText() const {
    return notice->text();
}

QString SplitReviewDialog::positionText() const {
    return position->text();
}

void SplitReviewDialog::markersEdited() {
    const int tracks = int(wave->markers().size()) + 1;
    settingCount = true;
    count->setValue(std::clamp(tracks, 1, kMaxTracks));
    settingCount = false;
    apply->setEnabled(changed());
    updateNotice();
    updatePosition();
}

void SplitReviewDialog::updatePosition() {
    const int index = wave->selectedMarker();
    const auto& markers = wave->markers();
    remove->setEnabled(index >= 0);
    play->setEnabled(index >= 0);
    add->setEnabled(wave->sideFrames() > 0);
    QString line;
    if (index >= 0) {
        // Named by the track it starts, the number the marker carries.
        line = textOrKey("IDS_REVIEW_SELECTED")
                   .arg(index + 2)
                   .arg(formatSideTime(markers[size_t(index)].frame, wave->sampleRate()));
    } else {
        line = textOrKey("IDS_REVIEW_NONE_SELECTED").arg(markers.size() + 1);
    }
    position->setText(line);
}

void SplitReviewDialog::updateNotice() {
    QStringList times;
    for (const SplitMarker& m : wave->markers())
        if (m.doubtful())
            times << formatSideTime(m.frame, wave->sampleRate());
    QStringList lines;
    if (!times.isEmpty())
        lines << textOrKey("IDS_REVIEW_DOUBTFUL").arg(times.join(QStringLiteral(", ")));
    QStringList open;
    for (int64_t frame : suggested) {
        const auto& marks = wave->markers();
        // A suggestion the user has taken up is no longer one.
        const bool taken = std::any_of(marks.begin(), marks.end(), [&](const SplitMarker& m) {
            return std::llabs(m.frame - frame) < int64_t(wave->sampleRate());
        });
        if (!taken)
            open << formatSideTime(frame, wave->sampleRate());
    }
    if (!open.isEmpty())
        lines << textOrKey("IDS_REVIEW_SUGGESTED").arg(open.join(QStringLiteral(", ")));
    notice->setText(lines.join(QStringLiteral("\n")));
}

void SplitReviewDialog::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && count->hasFocus()) {
        event->accept();
        return;
    }
    HouseDialog::keyPressEvent(event);
}

void SplitReviewDialog::playSelected() {
    const int index = wave->selectedMarker();
    if (index >= 0)
        emit playRequested(wave->markers()[size_t(index)].frame);
    wave->setFocus();
}

void SplitReviewDialog::addAtView() {
    // A new split halves the longest track, at the quietest moment near its middle.
    const auto& markers = wave->markers();
    int64_t start = 0, bestStart = 0, bestEnd = 0;
    for (size_t t = 0; t <= markers.size(); ++t) {
        const int64_t end = t < markers.size() ? markers[t].frame : wave->sideFrames();
        if (end - start > bestEnd - bestStart) {
            bestStart = start;
            bestEnd = end;
        }
        start = end;
    }
    wave->addMarker(bestStart + (bestEnd - bestStart) / 2, true);
    wave->setFocus();
}

} // namespace waxline::ui
