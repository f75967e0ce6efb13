#include "platform/linux/survey/SwayBindings.h"

#include "platform/linux/system/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <wordexp.h>

namespace quillox {

namespace {

    constexpr std::string_view magic = "i3-ipc";
    constexpr std::uint32_t getVersion = 7;
    constexpr std::uint32_t getConfiguration = 9;
    constexpr timeval answerPatience { 0, 200'000 };
    constexpr std::size_t largestAnswer = 4 << 20;
    constexpr int deepestInclude = 8;

    bool receive(int socket, char* buffer, std::size_t size)
    {
        while (size > 0) {
            const auto count = recv(socket, buffer, size, 0);
            if (count <= 0)
                return false;
            buffer += count;
            size -= static_cast<std::size_t>(count);
        }
        return true;
    }

    struct Header {
        std::array<char, magic.size()> mark;
        std::uint32_t size;
        std::uint32_t type;
    } __attribute__((packed));

    /// One field, a text, of sway's answer.
    std::optional<std::string> ask(
        const std::string& socketPath, std::uint32_t question, const char* field)
    {
        const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        socketPath.copy(address.sun_path, sizeof(address.sun_path) - 1);
        for (const int way : { SO_SNDTIMEO, SO_RCVTIMEO })
            setsockopt(socket.get(), SOL_SOCKET, way, &answerPatience, sizeof(answerPatience));
        Header header { {}, 0, question };
        magic.copy(header.mark.data(), magic.size());
        if (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0
            || send(socket.get(), &header, sizeof(header), MSG_NOSIGNAL) != sizeof(header)
            || !receive(socket.get(), reinterpret_cast<char*>(&header), sizeof(header))
            || header.size > largestAnswer)
            return std::nullopt;
        std::string text(header.size, '\0');
        if (!receive(socket.get(), text.data(), text.size()))
            return std::nullopt;
        const auto answer = nlohmann::json::parse(text, nullptr, false);
        const auto value = answer.is_object() ? answer.find(field) : answer.end();
        if (value == answer.end() || !value->is_string())
            return std::nullopt;
        return value->get<std::string>();
    }

    std::vector<std::string> wordsOf(const std::string& line)
    {
        std::istringstream stream(line);
        return { std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>() };
    }

    /// Reads a configuration as sway does: blocks put their first line before each of theirs.
    class ConfigurationReader {
    public:
        void read(const std::string& text, const std::filesystem::path& folder)
        {
            std::istringstream stream(text);
            std::string joined;
            for (std::string part; std::getline(stream, part);) {
                joined += part;
                if (joined.ends_with('\\')) {
                    joined.pop_back();
                    continue;
                }
                readLine(wordsOf(joined), folder);
                joined.clear();
            }
        }

        std::vector<std::string> bindings;
        bool isComplete = true;

    private:
        void readLine(std::vector<std::string> words, const std::filesystem::path& folder)
        {
            if (words.empty() || words[0].starts_with('#'))
                return;
            if (words[0] == "}") {
                if (!m_blocks.empty())
                    m_blocks.pop_back();
                return;
            }
            for (auto& word : words) {
                if (const auto variable = m_variables.find(word);
                    variable != m_variables.end() && words[0] != "set")
                    word = variable->second;
            }
            if (words[0] == "set" && words.size() > 2)
                m_variables[words[1]] = words[2];
            if (words[0] == "include" && words.size() > 1)
                include(words[1], folder);
            if (!m_blocks.empty())
                words.insert(words.begin(), m_blocks.back().begin(), m_blocks.back().end());
            if (words.back() == "{") {
                words.pop_back();
                m_blocks.push_back(std::move(words));
            } else if (passesInhibitor(words)) {
                std::string line;
                for (const auto& word : words)
                    line += (line.empty() ? "" : " ") + word;
                bindings.push_back(line);
            }
        }

        static bool passesInhibitor(const std::vector<std::string>& words)
        {
            auto word = std::ranges::find_if(
                words, [](const auto& each) { return each.starts_with("bind"); });
            if (word == words.end() || (word != words.begin() && words[0] != "mode"))
                return false;
            if (*word == "bindgesture" || *word == "bindswitch")
                return true;
            for (++word; word != words.end() && word->starts_with("--"); ++word) {
                if (*word == "--inhibited" || *word == "--whole-window")
                    return true;
            }
            return false;
        }

        void include(const std::string& pattern, const std::filesystem::path& folder)
        {
            const bool isAbsolute = pattern.find_first_of("/~$") == 0;
            const auto place = isAbsolute ? pattern : (folder / pattern).string();
            wordexp_t found {};
            if (m_depth == deepestInclude || wordexp(place.c_str(), &found, WRDE_NOCMD) != 0) {
                isComplete = false;
                return;
            }
            ++m_depth;
            for (std::size_t index = 0; index < found.we_wordc; ++index) {
                const std::filesystem::path path = found.we_wordv[index];
                std::ifstream file(path);
                // A pattern that nothing matches stays as it is.
                isComplete = isComplete && (file || path.string().find('*') != std::string::npos);
                read({ std::istreambuf_iterator<char>(file), {} }, path.parent_path());
            }
            --m_depth;
            wordfree(&found);
        }

        std::vector<std::vector<std::string>> m_blocks;
        std::map<std::string, std::string> m_variables;
        int m_depth = 0;
    };

} // namespace

std::optional<std::vector<std::string>> uninhibitableSwayBindings(const std::string& socketPath)
{
    const auto path = ask(socketPath, getVersion, "loaded_config_file_name");
    const auto text = ask(socketPath, getConfiguration, "config");
    if (!path || !text)
        return std::nullopt;
    ConfigurationReader reader;
    reader.read(*text, std::filesystem::path(*path).parent_path());
    return reader.isComplete ? std::optional(reader.bindings) : std::nullopt;
}

} // namespace quillox
