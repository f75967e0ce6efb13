// How the program comes by what updates need: by a module that is loaded for those installations
// alone that maintain themselves.

#include "platform/linux/system/OwnModule.h"
#include "platform/linux/update/UpdateParts.h"

namespace quillox {

const FoundUpdateParts& updateParts()
{
    static const FoundUpdateParts found = []() -> FoundUpdateParts {
        const auto module = openOwnModule("libquillox-updates.so", "quilloxUpdateParts");
        if (!module.door)
            return { nullptr, module.failure };
        return { reinterpret_cast<const UpdateParts* (*)()>(module.door)(), "" };
    }();
    return found;
}

} // namespace quillox
