// The paper library: the user's named papers and their menu order, the printer's own paper
// list fetched over IPP, and the background thread that fetches it.
#pragma once

#include "paperlib/library.h"
#include "paperlib/printer-papers.h"
#include "paperlib/fetch-thread.h"
#include "paperlib/printer-paper-list.h"
