// The tests' programs, and the one that stands in for the application, bring all of it with them.

#include "platform/linux/update/LinkedUpdateParts.h"

namespace quillox {

const FoundUpdateParts& updateParts()
{
    static const FoundUpdateParts found { &linkedUpdateParts, "" };
    return found;
}

} // namespace quillox
