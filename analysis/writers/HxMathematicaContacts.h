#pragma once
// Contact details printed in the header of every Mathematica notebook the library writes.
// They are kept here, and only here, so that changing them is a one-line edit.

namespace HxMathematicaContacts {

/// The maker of the recording software (notebook header rows 6 to 8).
inline constexpr const char* kMakerWeb = "http://www.corvina-tech.example";
inline constexpr const char* kMakerEmail = "info@corvina-tech.example";
inline constexpr const char* kMakerPhone = "+1 555 0100";

/// Wolfram Research, the maker of Mathematica (notebook header rows 12 to 14).
inline constexpr const char* kWolframWeb = "http://www.wolfram.com";
inline constexpr const char* kWolframEmail = "info@wolfram.com";
inline constexpr const char* kWolframPhone = "+1-217-398-0700";

}  // namespace HxMathematicaContacts
