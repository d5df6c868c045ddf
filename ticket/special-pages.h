#pragma once

#include "settings/settings.h"
