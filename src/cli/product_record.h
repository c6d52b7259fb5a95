// One product record as the catalogue commands print it, with the same keys
// in text and in JSON.
#pragma once

#include "output.h"

namespace ostrel {
class wncSoftwareProduct;
}

namespace ostrel::cli {

// ProductName, DisplayName, PartNumber, ApplicationPath, the versions (numbers),
// VersionString, BuildID, Revision, Label, IconFile, ToolTip.
Record productRecord(const wncSoftwareProduct& product);

}  // namespace ostrel::cli
