#include "lookup/MusicBrainzJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace waxline::lookup {

namespace {

std::string text(const QJsonObject& o, const char* key) {
    return o.value(key).toString().toStdString();
}

// An artist credit is a list of names with the joining words printed between them.
std::string creditText(const QJsonValue& credit) {
    std::string joined;
    for (const QJsonValue& v : credit.toArray()) {
        const QJsonObject name = v.toObject();
        joined += text(name, "name") + text(name, "joinphrase");
    }
    return joined;
}

std::string firstArtistId(const QJsonValue& credit) {
    const QJsonArray names = credit.toArray();
    return names.isEmpty() ? std::string()
                           : text(names.first().toObject().value("artist").toObject(), "id");
}

ReleaseSummary summaryOf(const QJsonObject& r) {
    ReleaseSummary s;
    s.id = text(r, "id");
    s.title = text(r, "title");
    s.artist = creditText(r.value("artist-credit"));
    s.date = text(r, "date");
    s.country = text(r, "country");
    s.barcode = text(r, "barcode");
    s.score = r.value("score").toInt();
    for (const QJsonValue& label : r.value("label-info").toArray()) {
        const std::string number = text(label.toObject(), "catalog-number");
        if (!number.empty()) {
            s.catalogueNumber = number;
            break;
        }
    }
    for (const QJsonValue& m : r.value("media").toArray()) {
        const QJsonObject medium = m.toObject();
        s.formats.push_back(text(medium, "format"));
        s.trackCounts.push_back(medium.value("track-count").toInt());
    }
    return s;
}

std::optional<QJsonObject> objectOf(const QByteArray& json) {
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject())
        return std::nullopt;
    return doc.object();
}

// Lucene's phrase syntax: a quote or backslash inside the phrase is escaped.
QString phrase(const QString& value) {
    QString escaped = value.trimmed();
    escaped.replace('\\', "\\\\");
    escaped.replace('"', "\\\"");
    return '"' + escaped + '"';
}

} // namespace

std::optional<std::vector<ReleaseSummary>> parseReleaseSearch(const QByteArray& json) {
    const auto root = objectOf(json);
    if (!root || !root->value("releases").isArray())
        return std::nullopt;
    std::vector<ReleaseSummary> releases;
    for (const QJsonValue& r : root->value("releases").toArray())
        if (r.isObject() && !r.toObject().value("id").toString().isEmpty())
            releases.push_back(summaryOf(r.toObject()));
    return releases;
}

std::optional<Release> parseRelease(const QByteArray& json) {
    const auto root = objectOf(json);
    if (!root || root->value("id").toString().isEmpty() || !root->value("media").isArray())
        return std::nullopt;
    Release release;
    release.summary = summaryOf(*root);
    release.artistId = firstArtistId(root->value("artist-credit"));
    release.hasFrontCover = root->value("cover-art-archive").toObject().value("front").toBool();
    for (const QJsonValue& m : root->value("media").toArray()) {
        const QJsonObject o = m.toObject();
        Medium medium;
        medium.position = o.value("position").toInt(1);
        medium.format = text(o, "format");
        for (const QJsonValue& t : o.value("tracks").toArray()) {
            const QJsonObject track = t.toObject();
            const QJsonObject recording = track.value("recording").toObject();
            ListedTrack listed;
            listed.number = text(track, "number");
            listed.position = track.value("position").toInt();
            listed.title = text(track, "title");
            // The track's own length, else the recording's; null when nobody timed it.
            double ms = track.value("length").toDouble();
            if (!(ms > 0))
                ms = recording.value("length").toDouble();
            listed.seconds = ms > 0 ? ms / 1000.0 : 0;
            const QJsonValue credit = track.contains("artist-credit")
                                          ? track.value("artist-credit")
                                          : recording.value("artist-credit");
            listed.artist = creditText(credit);
            if (listed.artist.empty())
                listed.artist = release.summary.artist;
            listed.recordingId = text(recording, "id");
            listed.trackId = text(track, "id");
            if (listed.number.empty())
                listed.number = std::to_string(listed.position);
            medium.tracks.push_back(listed);
        }
        release.media.push_back(medium);
    }
    return release;
}

QString artistAlbumQuery(const QString& artist, const QString& album) {
    QString query;
    if (!artist.trimmed().isEmpty())
        query = "artist:" + phrase(artist);
    if (!album.trimmed().isEmpty())
        query += (query.isEmpty() ? "" : " AND ") + QString("release:") + phrase(album);
    return query;
}

QString barcodeQuery(const QString& barcode) {
    return "barcode:" + phrase(barcode);
}

QString catalogueNumberQuery(const QString& catalogueNumber) {
    return "catno:" + phrase(catalogueNumber);
}

} // namespace waxline::lookup
