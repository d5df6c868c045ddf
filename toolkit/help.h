// Help: the bundle's help book (HTML pages in Resources/<CFBundleHelpBookFolder>/, named in
// Info.plist by "CFBundleHelpBookName") shown in one help window.
#pragma once

#include "platform/platform.h"

#include <QString>

namespace talmo {

inline constexpr OSStatus kHelpFileNotFoundErr = -43;

// Registers the bundle's help book under its name for DisplayHelp. -43 when the bundle has no
// help book folder, -50 when it names no book.
OSStatus RegisterHelpBook(const Bundle& bundle);

// Shows a page of the bundle's help book: `page` (relative to the book's folder) at `anchor`;
// with no page but an anchor, the first page holding that anchor; with neither, the book's
// index.html. -50 when "CFBundleHelpBookName" is missing or not a string, -43 when the page
// (or anchor) is not in the book.
OSStatus DisplayHelp(const Bundle& bundle, const QString& page, const QString& anchor);

} // namespace talmo
