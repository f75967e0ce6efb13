#pragma once

#include "app/CommandLine.h"
#include "app/ConfigDocument.h"

#include <functional>
#include <iosfwd>
#include <string>

namespace quillox {

class DefaultsStore;
class TextFiles;

/// `quillox config`: shows and changes the stored settings without starting the program. What goes
/// wrong is one line on `err`.
class ConfigCommand {
public:
    struct Machine {
        DefaultsStore& defaults;
        /// Waits until what was set is stored; otherwise gives false and the reason.
        std::function<bool(std::string* reason)> flush;
        /// The user's defaults file.
        std::string path;
        TextFiles& files;
        std::istream& in;
        std::ostream& out;
        std::ostream& err;
    };

    explicit ConfigCommand(Machine);

    /// The program's exit code.
    int run(const ConfigRequest&);

private:
    int show(const ConfigRequest&);
    int get(const ConfigRequest&);
    int set(const ConfigRequest&);
    int reset(const ConfigRequest&);
    int exportFile(const ConfigRequest&);
    int importFile(const ConfigRequest&);

    Configuration load() const;
    int store(const Configuration&);
    int print(const std::string& text);
    int fail(int exitCode, const std::string& line);

    Machine m_machine;
};

} // namespace quillox
