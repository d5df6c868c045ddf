// Ticket access helpers: reading the print session's tickets and typed reads and writes of
// ticket items and dictionary entries.
#pragma once

#include "platform/platform.h"
