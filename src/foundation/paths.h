// Small routines for names of files and folders: the long form of a path,
// the user's choice of a folder, the current directory, deleting a file.
// gfstrTrimAtNull, their helper for system buffers, lives in runtime/text.h.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel {

// The options the folder dialogue is shown with: only folders of the file
// system (1), the new dialogue style (64).
inline constexpr int32_t kBrowseOptions = 65;

// The long form of a path, or the input (a path that does not exist, a
// failure, which is logged).
std::string gfstrGetLongPathFilename(std::string_view vstrPathFilename);
// The folder the user chose in the shell's dialogue, or "" (cancelled, or a
// failure, which is logged).
std::string gfstrBrowseForFolder(int32_t vlngOwnerHwnd, std::string_view vstrTitle,
                                 int32_t vlngOptions, std::string_view vstrRootFolder);
// Makes the folder current and gives the one that was current before; ""
// and no change for "". Failures reach the caller.
std::string gfstrSetCurrentFolder(std::string_view vstrNewFolder);
// True when the file is not there afterwards, whoever removed it.
bool gfblnDeleteFile(std::string_view vstrPathFilename);

}  // namespace ostrel
