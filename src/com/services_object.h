// wncServices as hosts see it: the door to the routines that no other public
// class calls. It holds no state; each member calls one routine and hands
// back what that routine gives, so a routine that never raises never raises
// here. The members are defined beside their area (services_catalogue.cpp,
// services_settings.cpp, ...).
#pragma once

#include "com/automation_object.h"
#include "runtime/object.h"

namespace ostrel::com {

extern const ClassIdentity kServicesIdentity;

class ServicesObject final : public AutomationObject<Object, _wncServices> {
  public:
    ServicesObject() : AutomationObject(kServicesIdentity) {}

    // The catalogue's look-ups, the settings and the lock.
    HRESULT STDMETHODCALLTYPE ToolbarKey(BSTR PartNumber, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE InstallDir(BSTR* result) override;
    HRESULT STDMETHODCALLTYPE GetApplicationSetting(BSTR Application, BSTR Section, BSTR Key,
                                                    BSTR Default, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE SaveApplicationSetting(BSTR Application, BSTR Section, BSTR Key,
                                                     BSTR Value) override;
    HRESULT STDMETHODCALLTYPE GetMutex(BSTR Name, LONG TimeoutMs, LONG* result) override;
    HRESULT STDMETHODCALLTYPE ReleaseMutexHandle(LONG* Handle, VARIANT_BOOL* result) override;

    // The machine: processes.
    HRESULT STDMETHODCALLTYPE IsProcessRunning(BSTR Name, VARIANT* ProcessId,
                                               VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE RunProgram(BSTR CommandLine, LONG Unused, BSTR ReadyFile,
                                         VARIANT_BOOL* result) override;
    // Time conversion.
    HRESULT STDMETHODCALLTYPE ConvertToGMT(DATE LocalDate, DATE* result) override;
    HRESULT STDMETHODCALLTYPE NowGMT(DATE* result) override;
    HRESULT STDMETHODCALLTYPE ConvertFromGMT(DATE GMTDate, DATE* result) override;

    // Paths and folders. DeleteFile may be renamed DeleteFileW by the system's
    // macro; the generated header is renamed alike, the type library is not.
    HRESULT STDMETHODCALLTYPE GetLongPathFilename(BSTR PathFilename, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE BrowseForFolder(LONG OwnerHwnd, BSTR Title, LONG Options, BSTR Root,
                                              BSTR* result) override;
    HRESULT STDMETHODCALLTYPE SetCurrentFolder(BSTR NewFolder, BSTR* result) override;
    HRESULT STDMETHODCALLTYPE DeleteFile(BSTR PathFilename, VARIANT_BOOL* result) override;

    // The network adapter inventory.
    HRESULT STDMETHODCALLTYPE NetworkCards(_wncNames** result) override;
    HRESULT STDMETHODCALLTYPE Adapters(_wncNames** result) override;
    HRESULT STDMETHODCALLTYPE InterfaceData(BSTR Name, IDispatch** result) override;

    // Localised files.
    HRESULT STDMETHODCALLTYPE GetLocalisedFileName(BSTR BaseFile, BSTR* result) override;

    // The About window, modal over the host's window.
    HRESULT STDMETHODCALLTYPE ShowAbout(LONG OwnerHwnd) override;

    // The machine: the WMI inventory text.
    HRESULT STDMETHODCALLTYPE WmiInfo(BSTR* result) override;
};

}  // namespace ostrel::com
