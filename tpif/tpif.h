// TPIF job ticket: the writer (element layer and ticket layer) and the escaping of user texts.
// Other folders include only this header.
#pragma once

#include "ticket/ticket.h"
#include "tpif/escape.h"
#include "tpif/elements.h"
#include "tpif/writer.h"
#include "tpif/import.h"
#include "tpif/summary.h"
