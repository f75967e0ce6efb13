#include "platform/linux/system/FileSystemPosix.h"

#include <sys/stat.h>

namespace quillox {

namespace {

    /// A name with a zero in it names nothing; the system would read only what precedes it.
    bool look(const std::string& path, struct stat& status)
    {
        return path.find('\0') == std::string::npos && ::stat(path.c_str(), &status) == 0;
    }

} // namespace

bool FileSystemPosix::exists(const std::string& path) const
{
    struct stat status { };
    return look(path, status);
}

bool FileSystemPosix::isDirectory(const std::string& path) const
{
    struct stat status { };
    return look(path, status) && S_ISDIR(status.st_mode);
}

} // namespace quillox
