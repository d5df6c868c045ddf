// Watermark fonts: found by PostScript name through fontconfig, subset with hb-subset to the
// watermark's glyphs, written as Type 42 and kept in the watermark file.
#pragma once

#include "marking/watermark.h"

#include <optional>
#include <string>
#include <string_view>

namespace talmo {

struct FontFile {
    std::string path;
    int index = 0;              // face index inside a collection
    std::string postScriptName; // of the face found (a substitute's own name)
    std::string family, style;
};

// The installed TrueType-or-CFF face whose PostScript name is `name`. Nothing else is accepted:
// fontconfig's nearest match (DejaVu Sans for anything) is not the font asked for. When the
// name is not installed, a metric-compatible substitute stands in for the common PostScript
// core names (ArialMT and Helvetica by Liberation Sans, TimesNewRomanPSMT and Times-Roman by
// Liberation Serif, CourierNewPSMT and Courier by Liberation Mono, with their bold and italic
// faces). `why` says what was tried when nothing is found.
std::optional<FontFile> findFontByPostScriptName(std::string_view name, std::string* why = nullptr);

// The substitute's PostScript name for a core name, or nothing.
std::optional<std::string_view> metricCompatibleSubstitute(std::string_view name);

enum class FontConvertStatus {
    Stored,
    NotFound,
    Unreadable,
    NotTrueType,
    SubsetFailed,
    BadName, // the name the program would carry is not a plain PostScript name
    ConversionFailed,
    WriteFailed
};

struct FontConvertResult {
    FontConvertStatus status = FontConvertStatus::Stored;
    std::string message;
    bool ok() const { return status == FontConvertStatus::Stored; }
};

// The record's font as a Type 42 program (makeFontProgram), stored under fontName in the
// watermark file. Nothing is stored on any failure.
FontConvertResult convertFont(const _WatermarkData& record);

// Appends the Type 42 program of `font` to `program`: its subset to `glyphIds` (glyph names
// kept) named "TL-<fontName>-TL", or, where the font cannot be subset, the whole font under its
// own PostScript name. Either name must be a plain PostScript name, since it is written into the
// program. CFF-based fonts are refused before conversion; on any failure nothing is appended.
FontConvertResult makeFontProgram(const FontFile& font, std::string_view fontName,
                                  const std::vector<uint16_t>& glyphIds, std::string& program);

// The subset alone (for tests and the command line): TrueType bytes, or empty on failure.
std::string subsetFont(const FontFile& font, const std::vector<uint16_t>& glyphIds, std::string* why = nullptr);

} // namespace talmo
