// The DLL as a module: where it lies, and what keeps it loaded (host
// references to its objects and enumerators, class factories, server locks).
#pragma once

#include <windows.h>

#include <string>

namespace ostrel::com {

HMODULE moduleHandle() noexcept;
// Full path of Ostrel.dll itself.
std::wstring modulePath();

// Keeps the DLL in the process until it ends. Called before an apartment
// starts: its globals live in thread-local storage until its thread ends,
// and code unloaded under them would leave those threads' clean-up
// pointing nowhere (under Wine the thread then never finishes).
void pinModule() noexcept;

void lockModule() noexcept;
void unlockModule() noexcept;
// True while anything holds the module; DllCanUnloadNow answers from it.
bool moduleInUse() noexcept;

}  // namespace ostrel::com
