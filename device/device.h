// Printer capabilities: the device profile feature database, PPD choices and installable
// options, and the device picture chosen by printer model. Other folders include only this.
#pragma once

#include "ticket/ticket.h"
#include "device/profile.h"
#include "device/ppd.h"
#include "device/installable.h"
#include "device/mimic.h"
