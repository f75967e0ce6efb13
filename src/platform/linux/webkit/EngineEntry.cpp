// The one door of the engine's module; nothing else of it is seen from outside.

#include "platform/linux/system/OwnModule.h"
#include "platform/linux/webkit/WebEngine.h"

QUILLOX_MODULE_DOOR quillox::Engine* quilloxMakeEngine(
    quillox::RunLoop& runLoop, quillox::SystemLog& log, unsigned pageMemoryLimit)
{
    return std::make_unique<quillox::WebEngine>(runLoop, log, pageMemoryLimit).release();
}
