#pragma once

#include <QStringList>

namespace waxline::app {

// Whether a desktop lists a program for HTML pages in the freedesktop MIME files of these folders
// (each one an "applications" folder or a configuration folder): mimeapps.list, defaults.list or
// mimeinfo.cache with a non-empty "text/html=" entry, not taken away again by a
// "[Removed Associations]" section of the same file.
bool htmlHandlerListed(const QStringList& folders);

// The folders the desktop reads those MIME files from, the user's own first.
QStringList mimeFolders();

// Whether the desktop's browser can be expected to open a help page: the opener and a program
// for HTML to hand it to, or $BROWSER. Qt's opener reports success as soon as it starts
// xdg-open, even when that finds nothing to open the page with.
bool browserExpected();

} // namespace waxline::app
