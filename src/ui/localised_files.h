// A file in the language's variant, and the component's help file: how a
// window finds its localised help and opens it from its Help menu.
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

// The first entry of a window's Help menu, as far as these routines touch it.
struct HelpMenuEntry {
    bool Enabled = true;
};

// The two ways a suffix goes into a file name: "Help_de.chm" for files of a
// window, "Helpde.chm" for whole help and text files.
enum class SuffixForm { Underscore, Direct };

// The language's variant of a file that exists, suffix2 tried before
// suffix1; the empty string when neither exists. The file itself is never a
// candidate.
std::string gfstrGetLocalisedFileName(std::string_view vstrBaseFile,
                                      SuffixForm form = SuffixForm::Underscore);

// Points the component's help file at the language's variant of the named
// file in the component's folder, and enables the Help entry if and only if
// the component then has a help file.
void msubSetLocalisedHelpFile(std::string_view vstrHelpFileName, HelpMenuEntry& helpEntry);

// The Help entry's click: opens the component's help file (HtmlHelpA for
// ".chm", the older viewer at its index otherwise); with no help file the
// entry is disabled instead. Raises what the viewer raises.
void msubShowHelpFile(HelpMenuEntry& helpEntry);

}  // namespace ostrel
