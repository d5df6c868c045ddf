// Watermarks and page marking: watermark records and their file, rendering, and TrueType to
// Type 42 conversion. Other folders include only this header.
#pragma once

#include "settings/settings.h"
#include "marking/sfnt.h"
#include "marking/type42.h"
#include "marking/watermark.h"
#include "marking/font-convert.h"
#include "marking/watermark-render.h"
#include "marking/watermark-menu.h"
