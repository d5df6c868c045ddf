// Job ticket records: paper stock, special pages, colour options, background forms, image
// shift, and the page-list parser. Other folders include only this header.
#pragma once

#include "settings/settings.h"
#include "ticket/stock.h"
#include "ticket/page-ranges.h"
#include "ticket/special-pages.h"
#include "ticket/special-pages-rules.h"
#include "ticket/full-color.h"
#include "ticket/background-forms.h"
#include "ticket/image-shift.h"
