// The registry of Linux: .reg files the tool layers in, and the machine's
// network keys, synthesised from the live system the first time a key under
// them is opened.
#pragma once

#include "platform/common/registry_regfile.h"

namespace ostrel::platform {

// The one systemRegistry() answers on Linux.
RegFileRegistry& liveRegistry();

}  // namespace ostrel::platform
