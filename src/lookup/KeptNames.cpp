#include "lookup/KeptNames.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace waxline::lookup {

namespace {

const char* const kNamesFile = "/WXRTLookup.json";
const char* const kCoverFile = "/WXRTCover.jpg";

QString q(const std::string& s) {
    return QString::fromStdString(s);
}
std::string s(const QJsonObject& o, const char* key) {
    return o.value(key).toString().toStdString();
}

bool writeWhole(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

} // namespace

KeptNames namesOf(const Release& release, const ListingFit& fit) {
    KeptNames names;
    names.artist = release.summary.artist;
    names.album = release.summary.title;
    names.artistId = release.artistId;
    names.date = release.summary.date;
    names.releaseId = release.summary.id;
    if (fit.medium < 0 || static_cast<size_t>(fit.medium) >= release.media.size())
        return names;
    const Medium& medium = release.media[static_cast<size_t>(fit.medium)];
    if (release.media.size() > 1)
        names.discNumber =
            std::to_string(medium.position) + "/" + std::to_string(release.media.size());
    for (size_t i = fit.firstTrack; i < fit.firstTrack + fit.trackCount && i < medium.tracks.size();
         ++i) {
        const ListedTrack& t = medium.tracks[i];
        names.tracks.push_back({t.title, std::to_string(t.position > 0 ? t.position : int(i) + 1),
                                t.artist, t.recordingId, t.trackId});
    }
    return names;
}

bool keepNames(const std::string& folder, const KeptNames& names, const QByteArray& cover) {
    QJsonArray tracks;
    for (const KeptTrack& t : names.tracks)
        tracks.append(QJsonObject{{"title", q(t.title)},
                                  {"number", q(t.number)},
                                  {"artist", q(t.artist)},
                                  {"recording", q(t.recordingId)},
                                  {"track", q(t.trackId)}});
    const QJsonObject root{{"artist", q(names.artist)},
                           {"album", q(names.album)},
                           {"artistId", q(names.artistId)},
                           {"date", q(names.date)},
                           {"release", q(names.releaseId)},
                           {"disc", q(names.discNumber)},
                           {"tracks", tracks}};
    const QString dir = q(folder);
    QFile::remove(dir + kCoverFile);
    if (!cover.isEmpty() && !writeWhole(dir + kCoverFile, cover))
        return false;
    return writeWhole(dir + kNamesFile, QJsonDocument(root).toJson());
}

std::optional<KeptNames> keptNames(const std::string& folder) {
    QFile file(q(folder) + kNamesFile);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
    if (!doc.isObject())
        return std::nullopt;
    const QJsonObject o = doc.object();
    KeptNames names{s(o, "artist"),
                    s(o, "album"),
                    s(o, "artistId"),
                    s(o, "date"),
                    s(o, "release"),
                    s(o, "disc"),
                    {}};
    for (const QJsonValue& v : o.value("tracks").toArray()) {
        const QJsonObject t = v.toObject();
        names.tracks.push_back(
            {s(t, "title"), s(t, "number"), s(t, "artist"), s(t, "recording"), s(t, "track")});
    }
    return names;
}

QByteArray keptCover(const std::string& folder) {
    QFile file(q(folder) + kCoverFile);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void forgetNames(const std::string& folder) {
    QFile::remove(q(folder) + kNamesFile);
    QFile::remove(q(folder) + kCoverFile);
}

std::vector<std::string> trackNumbersOf(const KeptNames& names) {
    std::vector<std::string> numbers;
    for (const KeptTrack& t : names.tracks)
        numbers.push_back(t.number);
    return numbers;
}

std::vector<ReleaseTags> releaseTagsOf(const KeptNames& names, const QByteArray& cover) {
    std::vector<ReleaseTags> all;
    for (const KeptTrack& t : names.tracks) {
        ReleaseTags tags;
        // A track's own credit (a guest, a compilation) goes into ARTIST; the album keeps its own.
        if (t.artist != names.artist)
            tags.artist = t.artist;
        tags.albumArtist = names.artist;
        tags.date = names.date;
        tags.discNumber = names.discNumber;
        tags.releaseId = names.releaseId;
        tags.recordingId = t.recordingId;
        tags.releaseTrackId = t.trackId;
        tags.albumArtistId = names.artistId;
        tags.frontCover = cover.toStdString();
        all.push_back(std::move(tags));
    }
    return all;
}

QByteArray coverForTags(const QByteArray& picture, int maxPixels) {
    QImage image;
    if (!image.loadFromData(picture))
        return {};
    if (image.width() <= maxPixels && image.height() <= maxPixels && picture.startsWith("\xFF\xD8"))
        return picture; // a JPEG small enough goes in as the archive made it
    if (image.width() > maxPixels || image.height() > maxPixels)
        image = image.scaled(maxPixels, maxPixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.convertToFormat(QImage::Format_RGB32).save(&buffer, "JPEG", 90);
    return jpeg;
}

} // namespace waxline::lookup
