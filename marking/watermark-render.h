// Watermark rendering: DrawWatermark on a cairo context (pango lays out the text), the memory
// consumer the preview PDF is written through, the provider it is read back with, and the
// one-page preview itself.
#pragma once

#include "marking/watermark.h"

#include <cstddef>
#include <cstdint>
#include <optional>

typedef struct _cairo cairo_t;

namespace talmo {

// A page rectangle in the context's user space (points, y downwards as cairo has it).
struct PageRect {
    double x = 0, y = 0, width = 0, height = 0;
    double midX() const { return x + width / 2; }
    double midY() const { return y + height / 2; }
};

// Draws the record over the page rectangle; nothing for a null record. `alpha` is the
// context's alpha (the preview's density). A text watermark records its glyph ids, glyphCount
// and drawing point (xPos, yPos, y upwards from the page's bottom edge as designed) in the
// record, and saves the record when its glyphs changed (no buffer before, or another first
// glyph).
void DrawWatermark(cairo_t* context, const PageRect& page, _WatermarkData* record, double alpha = 1.0);

// The memory consumer: bytes written so far and a growable block.
struct MemoryConsumerInfo {
    size_t written = 0;
    size_t size = 0;
    uint8_t* block = nullptr;
    // Resizes the block; false leaves it as it was. Replaceable so tests can make it fail.
    bool (*resize)(MemoryConsumerInfo& info, size_t newSize) = nullptr;
};

MemoryConsumerInfo* CreateMemoryConsumer(size_t initialSize = 4096);
// Room is size - written - 1; while the count does not fit, the size doubles. A failed (or
// overflowing) resize writes nothing and returns 0; otherwise the count.
size_t MemoryConsumerPutBytes(void* info, const void* bytes, size_t count);
void MemoryConsumerReleaseInfo(void* info);

// The memory provider: a read position over bytes it does not own.
struct MemoryProviderInfo {
    const uint8_t* bytes = nullptr;
    size_t size = 0;
    size_t position = 0;
};

size_t MemoryProviderGetBytes(void* info, void* buffer, size_t count);
size_t MemoryProviderSkipBytes(void* info, size_t count);
void MemoryProviderRewind(void* info);
void MemoryProviderReleaseInfo(void* info);

// The preview: a one-page PDF of the given size (points), white, with the record drawn at
// alpha density / 100 for text and 1.0 for a picture. A null record gives a blank page. Sets
// the record's paper size; false when the PDF could not be written.
bool RenderWatermarkPDF(_WatermarkData* record, double paperWidth, double paperHeight, MemoryConsumerInfo& consumer);

// The panel's preview: `choice` is the chosen menu item's reference, an index into
// listOfWatermarks(), or nothing for "NoWatermark". The record's glyph buffer is freed after.
bool renderWatermark(std::optional<int32_t> choice, double paperWidth, double paperHeight,
                     MemoryConsumerInfo& consumer);

} // namespace talmo
