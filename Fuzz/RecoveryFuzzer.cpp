#include "Fuzz/Require.h"
#include "Plugin/Recording/ContainerWriter.h"
#include "Tests/Support/Frames.h"
#include "Velto/Analysis/Recovery.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// Arbitrary bytes as a damaged container. What is saved can be written and read again, and a container that the reader
// accepts gives exactly its frames. Bytes in front of what was saved take nothing away.

using namespace VeltoTouch;

namespace {

std::optional<std::vector<std::string>> read(const Data& text) {
    try {
        return Tests::textsOf(PipelineRecording(&text).frames());
    } catch (const std::invalid_argument&) {
    } catch (const std::runtime_error&) {
    }
    return std::nullopt;
}

void requireOrder(const Analysis::Recovery& recovery, std::size_t size) {
    std::uint64_t last = 0;
    for (const auto& [from, to] : recovery.lost) {
        require(last <= from && from <= to && to <= size);
        last = to;
    }
}

void requireThatDamageTakesNothing(const std::string& written, const std::vector<std::string>& saved) {
    const auto again = Analysis::recoverFrames(*makeRef<Data>("\"{[" + written));
    require(again && Tests::textsOf(again->frames) == saved);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const auto text = makeRef<Data>(std::string(bytes, bytes + size));
    const auto recovery = Analysis::recoverFrames(*text);
    const auto accepted = read(*text);
    require(recovery || !accepted);
    if (!recovery)
        return 0;
    requireOrder(*recovery, size);
    const std::vector<std::string> saved = Tests::textsOf(recovery->frames);
    if (accepted && !accepted->empty())
        require(saved == *accepted && recovery->lost.empty());
    const std::string written = writeContainer(recovery->frames);
    const auto again = read(*makeRef<Data>(written));
    require(again && again->size() == saved.size());
    if (!again->empty())
        requireThatDamageTakesNothing(written, *again);
    return 0;
}
