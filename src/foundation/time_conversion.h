// Date-times between the machine's local time and GMT, a second's
// resolution. The two directions are not each other's inverse: to GMT goes
// by the offset in force now, from GMT by the rule of the date.
#pragma once

namespace ostrel {

// The same instant in GMT. A failure is raised again with the source
// "[OstrelGlobals.gfdatConvertToGMT]" and "[gfdatConvertToGMT]" before its
// description.
double gfdatConvertToGMT(double vdatLocal);
// The current time in GMT; a failure of the conversion passes through.
double gfdatNowGMT();
// The local date-time of a GMT one; the input when the system refuses.
double gfdatConvertFromGMT(double vdatGMT);

}  // namespace ostrel
