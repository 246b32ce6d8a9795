// The files of an account and the dictionary names that the control's queries use.
#pragma once

#include <array>

#include <velmora/store/writer.h>

namespace velmora {

// The thirteen files of an account, in the order the control opens them when it is given
// a database (one handle each). A new account creates them in this order too; nothing
// else depends on it, as exports and queries name files by name.
inline constexpr std::array<const char16_t*, 13> kAccountFiles = {
    u"BESOINSAIDE",       u"SSIADSOINS", u"SSIADTYPESOINS",
    u"SSIADREGROUPSOINS", u"TABLES",     u"TPSSEMAINETYPE",
    u"TPSDETAILSINTERV",  u"TPSPARAM",   u"TACHE",
    u"GROUPETACHE",       u"TYPETACHE",  u"AIDEDETAILTACHE",
    u"TPSSEMAINETYPEFLOT"};

// Creates the thirteen files and defines the six dictionary names of the templates.
// The kind of a template ("S" for care) is kept in its attribute 3.
Batch standardLayout();

}  // namespace velmora
