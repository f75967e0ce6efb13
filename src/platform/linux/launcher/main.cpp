#include "platform/linux/launcher/Launcher.h"
#include "platform/linux/system/SystemLogStderr.h"

#include <filesystem>
#include <system_error>

int main(int, char** argv)
{
    using namespace quillox;
    SystemLogStderr log;
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return Launcher(VersionFolders(self.parent_path().string()), log).run(argv);
}
