#include "support/CanonicalText.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <utf8proc.h>

namespace quillox {

namespace {

    struct Free {
        void operator()(utf8proc_uint8_t* text) const { std::free(text); }
    };

    struct Decomposed {
        std::unique_ptr<utf8proc_uint8_t, Free> text;
        utf8proc_ssize_t length; ///< Negative when the text was no UTF-8.

        explicit Decomposed(std::string_view original)
        {
            utf8proc_uint8_t* result = nullptr;
            length = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(original.data()),
                static_cast<utf8proc_ssize_t>(original.size()), &result,
                static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE));
            text.reset(result);
        }

        std::string_view view() const
        {
            return { reinterpret_cast<const char*>(text.get()), static_cast<std::size_t>(length) };
        }
    };

} // namespace

bool areCanonicallyEquivalent(std::string_view left, std::string_view right)
{
    if (left == right)
        return true;
    const Decomposed first(left);
    const Decomposed second(right);
    return first.length >= 0 && second.length >= 0 && first.view() == second.view();
}

std::string lowercased(std::string_view text)
{
    std::string lowered;
    lowered.reserve(text.size());
    while (!text.empty()) {
        if (const char first = text.front(); static_cast<unsigned char>(first) < 0x80) {
            lowered += first >= 'A' && first <= 'Z' ? static_cast<char>(first - 'A' + 'a') : first;
            text.remove_prefix(1);
            continue;
        }
        utf8proc_int32_t character = 0;
        const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
            static_cast<utf8proc_ssize_t>(text.size()), &character);
        if (length < 1) {
            lowered += text.front();
            text.remove_prefix(1);
            continue;
        }
        std::array<utf8proc_uint8_t, 4> bytes {};
        const auto written = utf8proc_encode_char(utf8proc_tolower(character), bytes.data());
        lowered.append(reinterpret_cast<const char*>(bytes.data()), written);
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return lowered;
}

} // namespace quillox
