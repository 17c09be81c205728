#include "Velto/Output/Terminal.h"

#include "Platform/UTF8.h"
#include "Plugin/Recording/Damage.h"
#include "Velto/Output/Files.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <utility>

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

// Bytes of a text that a pipe takes without waiting, all of them escaped, once it takes anything.
constexpr std::size_t kTakenAtOnce = PIPE_BUF / 6 - 16;

std::atomic<bool> areColoursLeftOut = false;

bool coloursAreWanted() {
    static const bool wanted = !refusesColours() && standardOutputIsTerminal();
    return wanted && !areColoursLeftOut;
}

// The character that a well-formed sequence stands for.
std::uint32_t characterOf(std::string_view sequence) noexcept {
    const auto first = static_cast<unsigned char>(sequence.front());
    std::uint32_t character = sequence.size() == 1 ? first : first & (0x7FU >> sequence.size());
    for (const char tail : sequence.substr(1))
        character = character << 6U | (static_cast<unsigned char>(tail) & 0x3FU);
    return character;
}

// Controls, separators of lines, and what turns the direction of writing.
bool steersTerminals(std::uint32_t character) noexcept {
    static constexpr std::pair<std::uint32_t, std::uint32_t> kRanges[] = {
        {0x00, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x202E}, {0x2066, 0x2069}};
    return std::ranges::any_of(
        kRanges, [character](const auto& range) { return character >= range.first && character <= range.second; });
}

// As in JSON.
std::string escapeOf(std::uint32_t character) {
    switch (character) {
    case '\b':
        return "\\b";
    case '\f':
        return "\\f";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return fmt::format("\\u{:04x}", character);
    }
}

} // namespace

void writeErrorLine(std::string_view text) {
    const char* const beginning = ::isatty(STDERR_FILENO) != 0 ? kWipedLine : ""; // progress may stand there
    std::fputs((beginning + printable(text) + "\n").c_str(), stderr);
}

void writeErrorLineIfTaken(std::string_view text) {
    pollfd room{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
    if (::poll(&room, 1, 0) > 0 && (room.revents & POLLOUT) != 0)
        writeErrorLine(text.size() <= kTakenAtOnce ? text : fmt::format("{}...", text.substr(0, kTakenAtOnce)));
}

void complain(std::string_view subject, std::string_view message) {
    writeErrorLine(fmt::format("velto: {}: {}", subject, message));
}

std::string messageOf(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr)
        return "out of memory";
    if (const auto* const failure = dynamic_cast<const std::filesystem::filesystem_error*>(&error))
        return failure->code().message();
    return placedMessageOf(error);
}

int forEachFile(const std::vector<std::string>& files, const std::function<void(const std::string& file)>& handle) {
    int status = 0;
    for (const std::string& file : files) {
        try {
            handle(file);
        } catch (const ClosedPipe&) {
            throw;
        } catch (const OutputFailed&) {
            throw;
        } catch (const std::exception& error) {
            complain(file, messageOf(error));
            status = 1;
        }
    }
    return status;
}

std::string printable(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = UTF8::sequenceLength(text);
        const std::string_view sequence = text.substr(0, std::max<std::size_t>(length, 1));
        if (length == 0)
            shown += fmt::format("\\x{:02x}", static_cast<unsigned char>(text.front()));
        else if (const std::uint32_t character = characterOf(sequence); !steersTerminals(character))
            shown += sequence;
        else
            shown += escapeOf(character);
        text.remove_prefix(sequence.size());
    }
    return shown;
}

bool standardOutputIsTerminal() noexcept { return ::isatty(STDOUT_FILENO) != 0; }

bool refusesColours() noexcept {
    const char* const noColour = std::getenv("NO_COLOR");
    return noColour != nullptr && *noColour != '\0';
}

std::string onOneRow(std::string_view text) { return fmt::format("\x1b[?7l{}\x1b[?7h", text); }

void leaveOutColours() noexcept { areColoursLeftOut = true; }

std::string coloured(Colour colour, std::string_view text) {
    if (colour == Colour::Plain || !coloursAreWanted())
        return std::string(text);
    static constexpr const char* kCodes[] = {"0", "1", "32", "33", "31"};
    return fmt::format("\x1b[{}m{}\x1b[0m", kCodes[static_cast<int>(colour)], text);
}

} // namespace VeltoTouch::Velto
