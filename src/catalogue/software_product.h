// wncSoftwareProduct: one installed product of the family, a snapshot of its
// sub-key of the Toolbar key. Naming the record (writing ProductName) reads
// the key; nothing here ever writes the registry.
//
// Members are named as on the automation interface: ProductName() reads,
// ProductName(value) writes (the property's "let").
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "runtime/object.h"

namespace ostrel {

class wncSoftwareProducts;

// The Toolbar key, below HKEY_LOCAL_MACHINE.
inline constexpr std::string_view kToolbarKeyPath = "SOFTWARE\\QUORL\\Toolbar";

class wncSoftwareProduct : public Object {
  public:
    // Binds the language text and makes sure the shared machine facts exist;
    // a failure there reaches the creator, as it would from a class's start-up.
    wncSoftwareProduct();
    // Drops Parent and releases the shared machine facts.
    ~wncSoftwareProduct() override;

    // Public interface.
    const std::string& ApplicationPath() const { return ApplicationPath_; }
    void ApplicationPath(std::string_view value) { ApplicationPath_ = value; }
    const std::string& IconFile() const { return IconFile_; }
    void IconFile(std::string_view value) { IconFile_ = value; }
    const std::string& Label() const { return Label_; }
    void Label(std::string_view value) { Label_ = value; }
    const std::string& PartNumber() const { return PartNumber_; }
    // A write that changes only the case is dropped.
    void PartNumber(std::string_view value);
    const std::string& ProductName() const { return ProductName_; }
    // Stores the name and loads the record from its key, every time.
    void ProductName(std::string_view value);
    const std::string& Revision() const { return Revision_; }
    void Revision(std::string_view value) { Revision_ = value; }
    const std::string& ToolTip() const { return ToolTip_; }
    void ToolTip(std::string_view value) { ToolTip_ = value; }
    int16_t VersionBugFix() const { return VersionBugFix_; }
    void VersionBugFix(int16_t value) { VersionBugFix_ = value; }
    int16_t VersionMajor() const { return VersionMajor_; }
    void VersionMajor(int16_t value) { VersionMajor_ = value; }
    int16_t VersionMinor() const { return VersionMinor_; }
    void VersionMinor(int16_t value) { VersionMinor_ = value; }
    // Reloads the record from the key of its ProductName.
    void Load();
    // Computed by the load; writing a version number leaves it alone.
    const std::string& BuildID() const { return BuildID_; }

    // For the component's own use.
    // Reads the record from the key at this path below HKEY_LOCAL_MACHINE;
    // never raises (a failure ends the load where it happened, and is logged).
    void LoadEx(std::string_view vstrKeyPath);
    const std::string& DisplayName() const { return DisplayName_; }
    void DisplayName(std::string_view value) { DisplayName_ = value; }
    const Ref<wncSoftwareProducts>& Parent() const { return Parent_; }
    void Parent(Ref<wncSoftwareProducts> value);
    // "major.minor.revisionMajor.revisionMinor" in plain decimal.
    std::string VersionString() const;

  private:
    void msubResetFields();

    std::string ProductName_;
    std::string DisplayName_;
    std::string ApplicationPath_;
    std::string PartNumber_;
    int16_t VersionMajor_ = 0;
    int16_t VersionMinor_ = 0;
    int16_t VersionBugFix_ = 0;
    int16_t VersionRevisionMajor_ = 0;
    int16_t VersionRevisionMinor_ = 0;
    std::string BuildID_;
    std::string Revision_;
    std::string Label_;
    std::string IconFile_;
    std::string ToolTip_;
    Ref<wncSoftwareProducts> Parent_;  // counted: the collection and its records keep each other
};

}  // namespace ostrel
