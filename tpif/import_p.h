// Helpers shared by the importer's files.
#pragma once

#include "tpif/import.h"

#include <string>

namespace talmo::internal {

// The element's own text: its text and CDATA children only. Entity references never occur
// (documents declaring entities are refused) and are not followed.
std::string TPIFNodeText(xmlNodePtr node);

} // namespace talmo::internal
