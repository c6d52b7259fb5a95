// One product record as the catalogue commands print it, with the same keys
// in text and in JSON.
#pragma once

#include <cstdint>
#include <string>

#include "catalogue/software_product.h"
#include "output.h"

namespace ostrel::cli {

// Hands each field to `field(key, value)` in the order they are printed:
// ProductName, DisplayName, PartNumber, ApplicationPath, the versions
// (numbers), VersionString, BuildID, Revision, Label, IconFile, ToolTip.
template <class Field>
void forEachProductField(const wncSoftwareProduct& product, Field&& field) {
    field("ProductName", product.ProductName());
    field("DisplayName", product.DisplayName());
    field("PartNumber", product.PartNumber());
    field("ApplicationPath", product.ApplicationPath());
    field("VersionMajor", int64_t{product.VersionMajor()});
    field("VersionMinor", int64_t{product.VersionMinor()});
    field("VersionBugFix", int64_t{product.VersionBugFix()});
    field("VersionString", product.VersionString());
    field("BuildID", product.BuildID());
    field("Revision", product.Revision());
    field("Label", product.Label());
    field("IconFile", product.IconFile());
    field("ToolTip", product.ToolTip());
}

Record productRecord(const wncSoftwareProduct& product);

}  // namespace ostrel::cli
