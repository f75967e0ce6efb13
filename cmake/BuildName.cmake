# Writes the header OUTPUT with a name for the headers beneath SOURCE as they are, and for NAME. The same sources always
# give the same name.
file(GLOB_RECURSE headers RELATIVE ${SOURCE} ${SOURCE}/*.h)
list(SORT headers)
set(sums ${NAME})
foreach(header ${headers})
  file(SHA256 ${SOURCE}/${header} sum)
  string(APPEND sums " ${header} ${sum}")
endforeach()
string(SHA256 name "${sums}")
file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT [[#pragma once

namespace quillox {

/// The same in the program and in the modules that were built with it, and in no others.
inline constexpr char buildName[] = "@name@";

} // namespace quillox
]])
