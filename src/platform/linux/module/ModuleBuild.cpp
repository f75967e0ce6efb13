// Part of every module of the program: the name of its build, which is compared before anything
// else.

#include "platform/linux/system/BuildName.h"
#include "platform/linux/system/OwnModule.h"

#include <array>

QUILLOX_MODULE_DOOR const auto quilloxBuild = std::to_array(quillox::buildName);
