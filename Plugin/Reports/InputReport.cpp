#include "Plugin/Reports/InputReport.h"

#include <bit>
#include <cstring>
#include <type_traits>

namespace VeltoTouch::InputReport {
namespace {

static_assert(std::endian::native == std::endian::little, "records are taken byte for byte from little-endian reports");
static_assert(sizeof(Image) == 72 && sizeof(FirmwareEvent) == 9, "records have no gaps");

template <class Record>
std::optional<Record> parseRecord(const std::uint8_t* report, std::size_t length) noexcept {
    static_assert(std::is_trivially_copyable_v<Record>);
    if (length < 1 + sizeof(Record) || report[0] != Record::kReportID)
        return std::nullopt;
    Record record;
    std::memcpy(&record, report + 1, sizeof(Record));
    return record;
}

} // namespace

std::optional<Image> Image::parse(const std::uint8_t* report, std::size_t length) noexcept {
    return parseRecord<Image>(report, length);
}

std::optional<FirmwareEvent> FirmwareEvent::parse(const std::uint8_t* report, std::size_t length) noexcept {
    return parseRecord<FirmwareEvent>(report, length);
}

std::uint64_t FirmwareEvent::contextNumber() const noexcept {
    std::uint64_t number = 0;
    for (const std::uint8_t byte : context)
        number = number << 8U | byte;
    return number;
}

} // namespace VeltoTouch::InputReport
