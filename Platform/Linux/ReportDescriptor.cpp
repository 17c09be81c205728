#include "Platform/Linux/ReportDescriptor.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <vector>

#include <linux/hid.h>

namespace VeltoTouch {
namespace {

// An item's first byte: tag (4 bits), type (2), size of its data (2). Here it stands without the size.
enum : std::uint8_t {
    kInput = 0x80,
    kOutput = 0x90,
    kCollection = 0xA0,
    kFeature = 0xB0,
    kEndCollection = 0xC0,

    kUsagePage = 0x04,
    kReportSize = 0x74,
    kReportID = 0x84,
    kReportCount = 0x94,
    kPush = 0xA4,
    kPop = 0xB4,

    kUsage = 0x08,
};
constexpr std::uint8_t kSizeBits = 0x03;
constexpr std::uint8_t kLongItem = 0xFE; // followed by the size of its data and a tag of its own; none is in use

constexpr std::size_t kShortUsage = 2; // bytes; a longer usage has its page in its upper half

// No report comes near it; a sum that would is left there, so that no descriptor makes it wrap.
constexpr std::uint64_t kMostBits = 1U << 30U;

struct Item {
    std::uint8_t tag;
    std::size_t size; // of the data, in bytes
    std::uint32_t data;
};

// The next item, whose bytes are taken off the front; nothing at the end or where the last item is cut off.
std::optional<Item> takeItem(std::span<const std::uint8_t>& bytes) {
    while (bytes.size() >= 3 && bytes[0] == kLongItem) {
        const std::size_t length = std::size_t{3} + bytes[1];
        bytes = bytes.subspan(std::min(length, bytes.size()));
    }
    if (bytes.empty() || bytes[0] == kLongItem)
        return std::nullopt;
    const std::size_t code = bytes[0] & kSizeBits;
    Item item{.tag = static_cast<std::uint8_t>(bytes[0] & ~kSizeBits), .size = code == 3 ? 4 : code, .data = 0};
    if (bytes.size() <= item.size)
        return std::nullopt;
    for (std::size_t i = item.size; i > 0; --i)
        item.data = item.data << 8U | bytes[i];
    bytes = bytes.subspan(1 + item.size);
    return item;
}

} // namespace

class ReportDescriptor::Parser {
public:
    explicit Parser(ReportDescriptor& result) noexcept : _result(result) {}

    void read(const Item& item) {
        switch (item.tag) {
        case kInput:
            return declareField(kIOHIDReportTypeInput);
        case kOutput:
            return declareField(kIOHIDReportTypeOutput);
        case kFeature:
            return declareField(kIOHIDReportTypeFeature);
        case kCollection:
            return beginCollection();
        case kEndCollection:
            return forgetUsages();
        case kUsagePage:
            _global.usagePage = static_cast<std::uint16_t>(item.data);
            return;
        case kReportSize:
            _global.reportSize = item.data;
            return;
        case kReportCount:
            _global.reportCount = item.data;
            return;
        case kReportID:
            return setReportID(item.data);
        case kPush:
            return _stack.push_back(_global);
        case kPop:
            return pop();
        case kUsage:
            return noteUsage(item);
        default:
            return; // says what values mean, not how long they are
        }
    }

private:
    struct Global {
        std::uint16_t usagePage = 0;
        std::uint32_t reportSize = 0; // bits
        std::uint32_t reportCount = 0;
        std::uint8_t reportID = 0;
    };

    void noteUsage(const Item& item) {
        if (!_hasUsage)
            _usage = item;
        _hasUsage = true;
    }
    void forgetUsages() { _hasUsage = false; }

    void declareField(IOHIDReportType type) {
        forgetUsages();
        std::uint64_t& bits = _result._bits[type][_global.reportID];
        bits = std::min(bits + std::uint64_t{_global.reportSize} * _global.reportCount, kMostBits);
    }

    // A short usage belongs to the page that holds at its main item.
    void beginCollection() {
        if (_hasUsage && !_hasCollection) {
            const auto ownPage = static_cast<std::uint16_t>(_usage.data >> 16U);
            _result._primaryUsage = Usage{.page = _usage.size <= kShortUsage ? _global.usagePage : ownPage,
                                          .usage = static_cast<std::uint16_t>(_usage.data)};
        }
        _hasCollection = true;
        forgetUsages();
    }

    void setReportID(std::uint32_t reportID) {
        if (reportID == 0 || reportID > kHighestReportID)
            return;
        _global.reportID = static_cast<std::uint8_t>(reportID);
        _result._hasReportIDs = true;
    }

    void pop() {
        if (_stack.empty())
            return;
        _global = _stack.back();
        _stack.pop_back();
    }

    ReportDescriptor& _result;
    Global _global;
    std::vector<Global> _stack;
    Item _usage{}; // the first one since the last main item
    bool _hasUsage = false;
    bool _hasCollection = false;
};

ReportDescriptor::ReportDescriptor(std::span<const std::uint8_t> bytes) {
    Parser parser(*this);
    while (const auto item = takeItem(bytes))
        parser.read(*item);
}

std::size_t ReportDescriptor::lengthInBytes(std::uint64_t bits) const noexcept {
    return static_cast<std::size_t>((bits + 7) / 8) + (_hasReportIDs ? 1 : 0);
}

std::size_t ReportDescriptor::reportLength(IOHIDReportType type, std::uint8_t reportID) const noexcept {
    const auto known = _bits[type].find(reportID);
    return known == _bits[type].end() ? 0 : lengthInBytes(known->second);
}

std::size_t ReportDescriptor::longestReport(IOHIDReportType type) const noexcept {
    std::size_t longest = 0;
    for (const auto& [reportID, bits] : _bits[type])
        longest = std::max(longest, lengthInBytes(bits));
    return longest;
}

std::optional<ReportDescriptor> readReportDescriptor(const std::string& folder) {
    std::ifstream file(folder + "/device/report_descriptor", std::ios::binary);
    std::array<char, HID_MAX_DESCRIPTOR_SIZE> bytes{};
    file.read(bytes.data(), bytes.size());
    if (!file.is_open() || file.bad()) // it may go between the two
        return std::nullopt;
    const auto count = static_cast<std::size_t>(file.gcount());
    return ReportDescriptor({reinterpret_cast<const std::uint8_t*>(bytes.data()), count});
}

} // namespace VeltoTouch
