// The one door of the updates' module; nothing else of it is seen from outside.

#include "platform/linux/system/OwnModule.h"
#include "platform/linux/update/LinkedUpdateParts.h"

QUILLOX_MODULE_DOOR const quillox::UpdateParts* quilloxUpdateParts()
{
    return &quillox::linkedUpdateParts;
}
