#pragma once

#include "lookup/Listing.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

// Reading the music database's JSON answers (web service version 2) into listings.
namespace waxline::lookup {

// The releases of a search answer ("releases": [...]), in the service's order; nullopt when
// the answer is not such JSON.
std::optional<std::vector<ReleaseSummary>> parseReleaseSearch(const QByteArray& json);

// A release read with its recordings and artist credits; nullopt when the answer is not a
// release.
std::optional<Release> parseRelease(const QByteArray& json);

// The search query for each way of finding a release, in the service's query syntax.
QString artistAlbumQuery(const QString& artist, const QString& album);
QString barcodeQuery(const QString& barcode);
QString catalogueNumberQuery(const QString& catalogueNumber);

} // namespace waxline::lookup
