// What a command did.

#include "agent/console/Report.h"

#include "agent/console/Output.h"
#include "agent/platform/Encoding.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace agent {

namespace {

using Json = nlohmann::ordered_json;

Json ToJson(const std::vector<std::wstring>& strings)
{
    Json list = Json::array();
    for (const std::wstring& string : strings) {
        list.push_back(Utf8(string));
    }
    return list;
}

// The value in a row of the summary; lists have been printed item by item.
struct ValueToText {
    std::wstring operator()(std::int64_t number) const { return RightAligned(std::to_wstring(number)); }
    std::wstring operator()(double number) const
    {
        const std::wstring digits = std::to_wstring(number);
        return RightAligned(digits.substr(0, digits.find(L'.') + 2));
    }
    std::wstring operator()(bool flag) const { return flag ? L"yes" : L"no"; }
    std::wstring operator()(const std::wstring& string) const { return string; }
    std::wstring operator()(const std::vector<std::wstring>& /*items*/) const { return {}; }
    std::wstring operator()(const std::vector<Item>& /*items*/) const { return {}; }

private:
    static std::wstring RightAligned(const std::wstring& digits)
    {
        constexpr std::size_t kWidth = 14;
        return std::wstring(kWidth - std::min(kWidth, digits.size()), L' ') + digits;
    }
};

struct ScalarToJson {
    Json operator()(std::int64_t number) const { return number; }
    Json operator()(double number) const { return number; }
    Json operator()(bool flag) const { return flag; }
    Json operator()(const std::wstring& string) const { return Utf8(string); }
};

struct ValueToJson : ScalarToJson {
    using ScalarToJson::operator();
    Json operator()(const std::vector<std::wstring>& items) const { return ToJson(items); }
    Json operator()(const std::vector<Item>& items) const
    {
        Json list = Json::array();
        for (const Item& item : items) {
            Json object = Json::object();
            for (const auto& [name, value] : item) {
                object[name] = std::visit(ScalarToJson(), value);
            }
            list.push_back(std::move(object));
        }
        return list;
    }
};

} // namespace

std::wstring Counted(std::int64_t number, std::wstring_view noun)
{
    return std::to_wstring(number) + L" " + std::wstring(noun) + (number == 1 ? L"" : L"s");
}

Report::Value& Report::Row(const std::string& name, Value initial)
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), [&](const auto& r) { return r.first == name; });
    if (row != m_rows.end()) {
        return row->second;
    }
    return m_rows.emplace_back(name, std::move(initial)).second;
}

void Report::Set(const std::string& name, std::int64_t number)
{
    Row(name, std::int64_t{0}) = number;
}

void Report::Set(const std::string& name, const std::wstring& string)
{
    Row(name, std::wstring()) = string;
}

void Report::SetFlag(const std::string& name, bool flag)
{
    Row(name, false) = flag;
}

void Report::SetSeconds(const std::string& name, double seconds)
{
    Row(name, 0.0) = seconds;
}

void Report::Count(const std::string& name, std::int64_t number)
{
    std::get<std::int64_t>(Row(name, std::int64_t{0})) += number;
}

std::int64_t Report::Number(const std::string& name) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), [&](const auto& r) { return r.first == name; });
    return row == m_rows.end() ? 0 : std::get<std::int64_t>(row->second);
}

void Report::Fail(const std::wstring& subject, const std::wstring& reason, std::int64_t files)
{
    Count("failed", files);
    m_failures.emplace_back(subject, reason);
    WriteMessage(subject + L": " + reason);
}

void Report::Note(const std::wstring& string)
{
    m_notes.push_back(string);
    IsQuiet() ? WriteLog(string) : WriteMessage(string);
}

void Report::Add(const std::string& list, const std::wstring& item)
{
    std::get<std::vector<std::wstring>>(Row(list, std::vector<std::wstring>())).push_back(item);
}

void Report::AddItem(const std::string& list, const Item& item)
{
    std::get<std::vector<Item>>(Row(list, std::vector<Item>())).push_back(item);
}

ExitCode Report::Code() const
{
    if (m_interrupted) {
        return kInterrupted;
    }
    if (!m_failures.empty()) {
        return m_achieved > 0 && !m_useless ? kDoneInPart : kNothingDone;
    }
    if (m_inPart) {
        return kDoneInPart;
    }
    return m_atRestart ? kDoneAtRestart : kAllDone;
}

void Report::PrintText() const
{
    constexpr std::size_t kNameWidth = 26;
    for (const auto& [name, value] : m_rows) {
        std::wstring line = Wide(name);
        line.resize(std::max(line.size() + 1, kNameWidth), L' ');
        const std::wstring string = std::visit(ValueToText(), value);
        if (!string.empty()) {
            WriteResult(line + string + L"\n");
        }
    }
}

void Report::PrintJson(int code) const
{
    Json object;
    object["command"] = m_command;
    for (const auto& [name, value] : m_rows) {
        object[name] = std::visit(ValueToJson(), value);
    }
    Json failures = Json::array();
    for (const auto& [subject, reason] : m_failures) {
        failures.push_back({{"file", Utf8(subject)}, {"reason", Utf8(reason)}});
    }
    object["failures"] = failures;
    object["notes"] = ToJson(m_notes);
    object["interrupted"] = m_interrupted;
    object["exitCode"] = code;
    WriteObject(object.dump(2) + "\n");
}

int Report::Finish()
{
    if (!IsJson() && !IsQuiet()) {
        PrintText();
    }
    return FinishObject(Code());
}

int Report::FinishObject(ExitCode code)
{
    if (IsJson()) {
        PrintJson(code);
    }
    if (IsOutputLost()) {
        WriteMessage(L"standard output cannot be written");
        return kNothingDone;
    }
    return code;
}

} // namespace agent
