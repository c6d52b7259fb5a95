// Main: fills this apartment's globals, once, before its first object.
#pragma once

namespace ostrel {

// The eight start-up steps with their two error traps; never raises.
void Main();

// Runs Main unless this apartment has started (or failed) already: what the
// class factory and the tool's main do before the first object is made.
void ensureStarted();

}  // namespace ostrel
