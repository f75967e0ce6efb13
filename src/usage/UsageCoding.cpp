#include "usage/UsageCoding.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <ostream>

namespace quillox {

namespace {

    using nlohmann::json;

    /// The beginning of 2001, in the seconds of the system clock.
    constexpr double referenceDate = 978'307'200;

    /// Sums of so much never overflow, however many records there are.
    constexpr std::int64_t largestCount = std::int64_t { 1 } << 38;

    double secondsSinceReference(RunLoop::WallTime time)
    {
        return std::chrono::duration<double>(time.time_since_epoch()).count() - referenceDate;
    }

    std::optional<RunLoop::WallTime> timeFromReference(double seconds)
    {
        constexpr double centuries = 8e9; // A wall time holds 292 years to both sides of 1970.
        if (!(std::abs(seconds) < centuries))
            return std::nullopt;
        const std::chrono::duration<double> sinceEpoch(seconds + referenceDate);
        return RunLoop::WallTime(std::chrono::duration_cast<RunLoop::Duration>(sinceEpoch));
    }

    /// Takes the document apart while it is read, since a tree of it would be many times as large.
    /// The names are those of the JSON library.
    class Reader final : public json::json_sax_t {
    public:
        Usage usage;
        bool hasDays = false;

        bool null() override { return true; }
        bool boolean(bool) override { return true; }
        bool number_integer(number_integer_t value) override { return number(value); }
        bool number_unsigned(number_unsigned_t value) override
        {
            return number(value > largestCount ? 0 : static_cast<std::int64_t>(value));
        }
        bool number_float(number_float_t value, const string_t&) override
        {
            if (m_depth == 1 && m_key == "lastUsed")
                usage.lastUsed = timeFromReference(value);
            else
                number(std::abs(value) < static_cast<double>(largestCount)
                        ? static_cast<std::int64_t>(value)
                        : 0);
            return true;
        }
        bool string(string_t& value) override
        {
            if (isInRecord() && m_key == "date")
                m_record.date = value;
            else if (isInRecord() && m_key == "source")
                m_record.source = value;
            return true;
        }
        bool binary(binary_t&) override { return true; }

        bool start_object(std::size_t) override
        {
            ++m_depth;
            if (isInRecord()) {
                m_record = {};
                m_isInHours = false;
            }
            return true;
        }
        bool key(string_t& value) override
        {
            m_key = value;
            return true;
        }
        bool end_object() override
        {
            if (isInRecord())
                keepRecord();
            --m_depth;
            return true;
        }
        bool start_array(std::size_t) override
        {
            ++m_depth;
            if (m_depth == 1)
                return false;
            if (m_depth == 2 && m_key == "days")
                m_isInDays = hasDays = true;
            if (m_isInDays && m_depth == 4 && m_key == "hours") {
                m_isInHours = true;
                m_hour = 0;
            }
            return true;
        }
        bool end_array() override
        {
            if (m_depth == 2)
                m_isInDays = false;
            if (m_depth == 4)
                m_isInHours = false;
            --m_depth;
            return true;
        }
        bool parse_error(std::size_t, const std::string&, const json::exception&) override
        {
            return false;
        }

    private:
        bool isInRecord() const { return m_isInDays && m_depth == 3; }

        bool number(std::int64_t value)
        {
            if (m_depth == 1 && m_key == "lastUsed")
                usage.lastUsed = timeFromReference(static_cast<double>(value));
            const auto count = value < 0 || value > largestCount ? 0 : value;
            if (m_isInHours && m_depth == 4) {
                if (m_hour < m_record.hours.size())
                    m_record.hours[m_hour] = count;
                ++m_hour;
            } else if (isInRecord() && m_key == "sessions") {
                m_record.sessions = count;
            } else if (isInRecord() && m_key == "activeSeconds") {
                m_record.activeSeconds = count;
            }
            return true;
        }

        void keepRecord()
        {
            if (m_record.date.empty() || m_record.source.empty())
                return;
            auto& counts = usage.days.at(m_record.date, m_record.source);
            counts = { m_record.sessions, m_record.activeSeconds, m_record.hours };
        }

        int m_depth = 0;
        std::string m_key;
        bool m_isInDays = false;
        bool m_isInHours = false;
        std::size_t m_hour = 0;
        UsageDay m_record;
    };

    bool isPlain(char character)
    {
        return character >= ' ' && character <= '~' && character != '"' && character != '\\';
    }

    void append(fmt::memory_buffer& line, std::string_view text)
    {
        line.append(text.data(), text.data() + text.size());
    }

    void append(fmt::memory_buffer& line, std::int64_t number)
    {
        const fmt::format_int digits(number);
        line.append(digits.data(), digits.data() + digits.size());
    }

    /// What needs no escaping, as nearly all days and sites do not, is put down as it is.
    void appendQuoted(fmt::memory_buffer& line, const std::string& text)
    {
        if (!std::ranges::all_of(text, isPlain))
            return append(line, json(text).dump(-1, ' ', false, json::error_handler_t::replace));
        line.push_back('"');
        append(line, text);
        line.push_back('"');
    }

    /// By hand, because formatting so many numbers takes twice as long.
    void appendRecord(fmt::memory_buffer& line, const std::string& date, const std::string& source,
        const UsageRecords::Counts& counts)
    {
        append(line, R"({"date":)");
        appendQuoted(line, date);
        append(line, R"(,"source":)");
        appendQuoted(line, source);
        append(line, R"(,"sessions":)");
        append(line, counts.sessions);
        append(line, R"(,"activeSeconds":)");
        append(line, counts.activeSeconds);
        append(line, R"(,"hours":)");
        char separator = '[';
        for (const auto hour : counts.hours) {
            line.push_back(separator);
            append(line, hour);
            separator = ',';
        }
        append(line, "]}");
    }

} // namespace

void encodeUsage(const Usage& usage, std::ostream& out)
{
    out << R"({"days":[)";
    std::string_view separator;
    fmt::memory_buffer line;
    usage.days.visit([&](const std::string& date, const std::string& source, const auto& counts) {
        line.clear();
        append(line, separator);
        appendRecord(line, date, source, counts);
        out.write(line.data(), static_cast<std::streamsize>(line.size()));
        separator = ",";
    });
    out << ']';
    if (usage.lastUsed)
        out << fmt::format(R"(,"lastUsed":{})", secondsSinceReference(*usage.lastUsed));
    out << '}';
}

std::optional<Usage> decodeUsage(std::string_view text)
{
    Reader reader;
    if (!json::sax_parse(text.begin(), text.end(), &reader) || !reader.hasDays)
        return std::nullopt;
    return std::move(reader.usage);
}

} // namespace quillox
