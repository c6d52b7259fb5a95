// Main: fills this apartment's globals, once, before its first object.
#pragma once

namespace ostrel {

// The eight start-up steps with their two error traps; never raises.
void Main();

}  // namespace ostrel
