#include "app/ExportReport.h"
#include "app/SharedText.h"

#include "app/MessageBoxAlerts.h"
#include "exporting/EarlyEncoder.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace waxline::app {

using exporting::ExportProblem;

namespace {

QString words(const char* key, const QStringList& arguments = {}) {
    return alertText(QString::fromLatin1(key), arguments);
}

bool diskFull(const ExportProblem& problem) {
    return problem.detail.find(std::strerror(ENOSPC)) != std::string::npos;
}

} // namespace

QString trackProblemText(const ExportProblem& problem) {
    using Kind = ExportProblem::Kind;
    if (diskFull(problem))
        return words("IDS_REASON_DISK_FULL");
    switch (problem.kind) {
    case Kind::None:
        return {};
    case Kind::TrackFileMissing:
    case Kind::TrackFileEmpty:
    case Kind::TrackFileUnreadable:
    case Kind::TrackFileHoldsNoAudio:
        return words("IDS_REASON_TRACK_FILE",
                     {text(std::filesystem::path(problem.path).filename().string())});
    case Kind::EncoderNotFound:
    case Kind::EncoderNotStarted:
    case Kind::EncoderNoPipe:
    case Kind::EncoderNothingToRun:
        return words("IDS_REASON_NO_ENCODER");
    case Kind::ImportCannotMakeFolder:
    case Kind::ImportCannotCreate:
    case Kind::ImportCannotRead:
    case Kind::ImportCannotWrite:
    case Kind::ImportCannotPutInPlace:
    case Kind::LibraryUnavailable:
    case Kind::NotExported:
        return words("IDS_REASON_LIBRARY");
    case Kind::EncoderFailed:
    case Kind::EncoderMadeNoMp3:
    case Kind::CannotTag:
    case Kind::NormaliseCannotRead:
    case Kind::NormaliseCannotCreate:
    case Kind::NormaliseCannotWrite:
    case Kind::NormaliseCannotFinish:
    case Kind::CleaningFailed:
        break;
    }
    return words("IDS_REASON_ENCODER_FAILED");
}

QString trackRunsText(const std::vector<int>& tracks) {
    QStringList runs;
    for (const auto& [first, last] : exporting::trackRuns(tracks))
        runs << (first == last ? QString::number(first)
                               : QStringLiteral("%1\u2013%2").arg(first).arg(last));
    return runs.join(QStringLiteral(", "));
}

std::vector<int> missingTracks(const std::vector<exporting::TrackOutcome>& outcomes) {
    std::vector<int> missing;
    for (const auto& outcome : outcomes)
        if (!outcome.ok)
            missing.push_back(outcome.index);
    return missing;
}

QString missingTracksText(const std::vector<exporting::TrackOutcome>& outcomes) {
    const std::vector<int> missing = missingTracks(outcomes);
    QString account =
        words("IDS_MISSING_TRACKS", {QString::number(missing.size()),
                                     QString::number(outcomes.size()), trackRunsText(missing)});
    QStringList reasons;
    for (const auto& outcome : outcomes) {
        const QString reason = outcome.ok ? QString() : trackProblemText(outcome.problem);
        if (!reason.isEmpty() && !reasons.contains(reason))
            reasons << reason;
    }
    for (const QString& reason : reasons)
        account += QStringLiteral("<br><br>") + reason;
    return account;
}

} // namespace waxline::app
