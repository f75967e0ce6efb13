#pragma once

#include "app/CommandLine.h"
#include "usage/UsageStore.h"

#include <functional>
#include <iosfwd>
#include <string>

namespace quillox {

/// `quillox usage`: shows the statistics without starting the program, or forgets them. What goes
/// wrong is one line on `err`. Only a reset writes the store.
class UsageCommand {
public:
    struct Machine {
        UsageStore& store;
        /// Why what is stored could not be taken over; empty when it was, or there is nothing.
        std::string damage;
        /// Waits until what was changed is stored; empty, or why it is not.
        std::function<std::string()> flush;
        /// The program's running copy; 0 when there is none.
        int runningProcess = 0;
        std::ostream& out;
        std::ostream& err;
    };

    explicit UsageCommand(Machine);

    /// The program's exit code.
    int run(const UsageRequest&);

private:
    int show(const UsageRequest&);
    int reset(const UsageRequest&);
    int print();
    int fail(int exitCode, const std::string& line);

    void writeText(std::optional<int> lastDays);
    void writeJson(std::optional<int> lastDays);
    void writeCsv(std::optional<int> lastDays);
    void writePrometheus();

    Machine m_machine;
};

} // namespace quillox
