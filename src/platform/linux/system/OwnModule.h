#pragma once

#include <string>

/// Before a definition: what the program may look up in a module of ours.
#define QUILLOX_MODULE_DOOR extern "C" __attribute__((visibility("default")))

namespace quillox {

/// What a module has to offer, or why there is none.
struct OwnModule {
    void* door = nullptr; ///< The symbol that was asked for. It stays for as long as the program.
    std::string failure; ///< A clause for the log.
};

/// Loads a module that comes with the program, by its file's name, and looks a symbol up in it. The
/// two halves share their classes, and a module of another build would read them otherwise: nothing
/// of it is looked at before the name of its build has been compared. Everything is bound at once,
/// so that a library that lacks something is noticed here and not while a page is sealed.
/// Any thread.
OwnModule openOwnModule(const std::string& file, const char* door);

} // namespace quillox
