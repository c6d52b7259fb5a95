#include "product_record.h"

#include "catalogue/software_product.h"

namespace ostrel::cli {

Record productRecord(const wncSoftwareProduct& product) {
    Record record;
    record["ProductName"] = product.ProductName();
    record["DisplayName"] = product.DisplayName();
    record["PartNumber"] = product.PartNumber();
    record["ApplicationPath"] = product.ApplicationPath();
    record["VersionMajor"] = product.VersionMajor();
    record["VersionMinor"] = product.VersionMinor();
    record["VersionBugFix"] = product.VersionBugFix();
    record["VersionString"] = product.VersionString();
    record["BuildID"] = product.BuildID();
    record["Revision"] = product.Revision();
    record["Label"] = product.Label();
    record["IconFile"] = product.IconFile();
    record["ToolTip"] = product.ToolTip();
    return record;
}

}  // namespace ostrel::cli
