#include "Tools/Terminal.h"

#include "Platform/JSON.h"
#include "Recording/Damage.h"
#include "Tools/Files.h"

#include <cstdio>
#include <cstdlib>
#include <new>

#include <fmt/format.h>
#include <unistd.h>

namespace VeltoTouch::Tools {
namespace {

constexpr const char* kWipedLine = "\r\x1b[K";

bool coloursAreWanted() {
    static const bool wanted = [] {
        const char* noColour = std::getenv("NO_COLOR");
        return (noColour == nullptr || *noColour == '\0') && standardOutputIsTerminal();
    }();
    return wanted;
}

} // namespace

void complain(std::string_view subject, std::string_view message) {
    const char* const beginning = ::isatty(STDERR_FILENO) != 0 ? kWipedLine : ""; // progress may stand there
    std::fputs(fmt::format("{}velto: {}: {}\n", beginning, subject, message).c_str(), stderr);
}

std::string messageOf(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr)
        return "out of memory";
    const std::string* place = placeOf(error);
    return place != nullptr ? fmt::format("{} ({})", error.what(), *place) : error.what();
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
    std::string escaped;
    JSON::appendString(escaped, text);
    return escaped.substr(1, escaped.size() - 2);
}

std::string_view fileNameOf(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

bool standardOutputIsTerminal() noexcept { return ::isatty(STDOUT_FILENO) != 0; }

std::string coloured(Colour colour, std::string_view text) {
    if (colour == Colour::Plain || !coloursAreWanted())
        return std::string(text);
    static constexpr const char* kCodes[] = {"0", "1", "32", "33", "31"};
    return fmt::format("\x1b[{}m{}\x1b[0m", kCodes[static_cast<int>(colour)], text);
}

} // namespace VeltoTouch::Tools
