// Setting maps: the static tables that bind each menu choice to its ticket value and label.
#pragma once

#include "platform/platform.h"
