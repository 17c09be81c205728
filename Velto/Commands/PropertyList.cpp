#include "Velto/Commands/PropertyList.h"

#include "Platform/JSON.h"
#include "Velto/Daemon/ValueText.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch::Velto {
namespace {

constexpr std::size_t kColumns = 6;
using Row = std::array<std::string, kColumns>;

// The members of a dictionary that are none themselves.
void addMembers(std::vector<Row>& rows, const std::string& name, const Value* value) {
    const auto* dictionary = as<Dictionary>(value);
    if (dictionary == nullptr) {
        rows.push_back({"  " + name, shortText(value), "", "", "", ""});
        return;
    }
    for (const auto& [key, member] : dictionary->entries())
        addMembers(rows, name.empty() ? key : name + "." + key, member.get());
}

void addRows(std::vector<Row>& rows, const ReadProperty& read) {
    const auto& [property, value, source] = read;
    const bool isDictionary = as<Dictionary>(value) != nullptr;
    const auto text = [](const Ref<Value>& shown) { return shown ? shortText(shown.get()) : ""; };
    rows.push_back({property.key, isDictionary ? "" : text(value), text(property.defaultValue),
                    std::string(property.type), std::string(property.range), source});
    if (isDictionary)
        addMembers(rows, "", value.get());
}

} // namespace

std::string sourceMember(const std::string& source) {
    return source.empty() ? "" : ",\"source\":" + JSON::quoted(source);
}

std::string propertyLines(const std::vector<ReadProperty>& properties) {
    std::string lines;
    for (const auto& [property, value, source] : properties) {
        lines += fmt::format(R"({{"kind":"property","key":"{}","value":{},"type":"{}","range":{},"default":{}{}}})",
                             property.key, JSON::text(value.get()), property.type, property.bounds,
                             JSON::text(property.defaultValue.get()), sourceMember(source)) +
                 "\n";
    }
    return lines;
}

std::string propertyTable(const std::vector<ReadProperty>& properties) {
    std::vector<Row> rows{{"key", "value", "default", "kind", "range", "source"}};
    for (const ReadProperty& property : properties)
        addRows(rows, property);
    std::array<std::size_t, kColumns> widths{};
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < kColumns; ++column)
            widths.at(column) = std::max(widths.at(column), row.at(column).size());
    }
    std::string table;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < kColumns; ++column)
            line += fmt::format("{:<{}}", row.at(column), widths.at(column) + 2);
        table += printable(line.substr(0, line.find_last_not_of(' ') + 1)) + "\n";
    }
    return table + fmt::format("By name only: {}\n", fmt::join(unlistedKeys(), ", "));
}

} // namespace VeltoTouch::Velto
