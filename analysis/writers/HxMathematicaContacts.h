#pragma once
/// \file
/// Contact details printed in the header of every Mathematica notebook the library writes.
/// They are kept here, and only here, so that changing them is a one-line edit.

/// Contact details of the Mathematica notebook header.
namespace HxMathematicaContacts {

// The maker of the recording software (notebook header rows 6 to 8).
/// Web address of the maker of the recording software (notebook header row 6).
inline constexpr const char* kMakerWeb = "http://www.corvina-tech.example";
/// E-mail address of the maker of the recording software (notebook header row 7).
inline constexpr const char* kMakerEmail = "info@corvina-tech.example";
/// Phone number of the maker of the recording software (notebook header row 8).
inline constexpr const char* kMakerPhone = "+1 555 0100";

// Wolfram Research, the maker of Mathematica (notebook header rows 12 to 14).
/// Web address of Wolfram Research, the maker of Mathematica (notebook header row 12).
inline constexpr const char* kWolframWeb = "http://www.wolfram.com";
/// E-mail address of Wolfram Research (notebook header row 13).
inline constexpr const char* kWolframEmail = "info@wolfram.com";
/// Phone number of Wolfram Research (notebook header row 14).
inline constexpr const char* kWolframPhone = "+1-217-398-0700";

}  // namespace HxMathematicaContacts
