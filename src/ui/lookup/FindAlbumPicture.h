#pragma once

#include <QImage>

namespace waxline::ui {

// The lookup dialog on made-up releases with drawn sleeves, for the screenshots: the list as
// found, or (`chosen`) after Use with the cover shown and the names filled in.
QImage grabFindAlbum(bool chosen);

} // namespace waxline::ui
