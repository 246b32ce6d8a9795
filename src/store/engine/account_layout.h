// The files of an account and the dictionary names that the control's queries use.
#pragma once

#include <array>

#include <velmora/store/writer.h>

namespace velmora {

// The thirteen files, in the order the control opens them.
inline constexpr std::array<const char16_t*, 13> kAccountFiles = {u"SSIADSOINS",
                                                                  u"SSIADTYPESOINS",
                                                                  u"SSIADREGROUPSOINS",
                                                                  u"TACHE",
                                                                  u"GROUPETACHE",
                                                                  u"TYPETACHE",
                                                                  u"AIDEDETAILTACHE",
                                                                  u"TPSSEMAINETYPE",
                                                                  u"TPSSEMAINETYPEFLOT",
                                                                  u"TPSDETAILSINTERV",
                                                                  u"TPSPARAM",
                                                                  u"BESOINSAIDE",
                                                                  u"TABLES"};

// Creates the thirteen files and defines the six dictionary names of the templates.
// The kind of a template ("S" for care) is kept in its attribute 3.
Batch standardLayout();

}  // namespace velmora
