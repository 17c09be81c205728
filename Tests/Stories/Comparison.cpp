#include "Tests/Stories/Comparison.h"

#include "Plugin/Recording/ContainerScanner.h"
#include "Plugin/Recording/RecordingCopy.h"
#include "Tests/Reference/Container.h"
#include "Tests/Stories/Clock.h"
#include "Tests/Stories/Differences.h"
#include "Tests/Stories/Observed.h"
#include "Tests/Stories/Values.h"
#include "Tests/Support/Reports.h"

#include <algorithm>
#include <stdexcept>

namespace VeltoTouch::Tests {
namespace {

// What a call throws: the kind and the message, or nothing.
template <class Call>
std::string thrownBy(const Call& call) {
    try {
        call();
        return {};
    } catch (const std::invalid_argument& error) {
        return std::string("invalid argument: ") + error.what();
    } catch (const std::runtime_error& error) {
        return std::string("runtime error: ") + error.what();
    }
}

// The system and the reference, side by side.
class Both {
public:
    explicit Both(bool isLogged) : _seen(_ours, *_theirs.pipeline, isLogged) {
        _recording.pipeline = std::shared_ptr<PipelineInput>(&_ours, [](PipelineInput* /*owned by this*/) {});
        storyClock().ticks = 0;
        _theirs.numerator = storyClock().timebase.numer;
        _theirs.denominator = storyClock().timebase.denom;
    }

    // The first difference after the step, or nothing.
    std::string tell(const Step& step) {
        std::visit([this](const auto& one) { take(one); }, step);
        if (_difference.empty())
            _difference = _seen.differenceAfterStep();
        if (_difference.empty() && _recording.frames().size() != _theirs.frames.size())
            _difference = "number of frames recorded";
        if (_difference.empty() && _recording.playCanContinue() != _theirs.playCanContinue())
            _difference = "whether playback can go on";
        return std::move(_difference);
    }

    std::string end() {
        std::string difference = differenceOfFrames(_recording.frames(), _theirs.frames);
        return difference.empty() ? _seen.differenceOfLog() : difference;
    }

    // Goes on with these frames, as read from a container.
    void takeOver(PipelineRecording recording, std::list<Reference::Frame> frames) {
        recording.pipeline = _recording.pipeline;
        _recording = std::move(recording);
        _theirs.frames = std::move(frames);
        _theirs.play = {};
        _recording.setMaxFrameCount(_theirs.maxFrameCount);
        _theirs.setMaxFrameCount(_theirs.maxFrameCount);
    }

    [[nodiscard]] std::uint64_t frames() const { return _frames; }

private:
    void take(const Steps::Images& images) {
        InputReport::Image image{};
        image.frameNumber = images.frame;
        image.timestampMs = images.timeMs;
        image.padSignal = images.signals;
        for (std::uint32_t i = 0; i < images.count && _difference.empty(); ++i) {
            send(imageReport(image));
            _difference = _seen.differenceAfterFrame();
            image.frameNumber += images.frameStep;
            image.timestampMs += images.timeStepMs;
            ++_frames;
        }
    }
    void take(const Steps::Report& report) { send(report.bytes); }
    void take(const Steps::Setting& setting) {
        const std::uint64_t time = nextTime();
        _recording.setState(time, setting.key, valueOf(setting.value));
        _theirs.setState(time, setting.key, setting.value);
    }
    void take(const Steps::Metadata& metadata) {
        const std::uint64_t time = nextTime();
        _recording.handleMetadata(time, metadata.key, valueOf(metadata.value));
        _theirs.handleMetadata(time, metadata.key, metadata.value);
    }
    void take(const Steps::Read& read) {
        const Ref<Value> ours = _ours.getState(read.key);
        if (!areSame(ours.get(), _theirs.pipeline->getState(read.key)))
            _difference = "value of " + read.key;
    }
    void take(const Steps::Clock& clock) { storyClock().ticks = _theirs.hostTime = clock.ticks; }
    void take(const Steps::Callbacks& callbacks) { _seen.install(callbacks.installed); }
    void take(const Steps::Bound& bound) {
        _recording.setMaxFrameCount(bound.count);
        _theirs.setMaxFrameCount(bound.count);
    }
    void take(const Steps::Sort& /*sort*/) {
        _recording.sortFrames();
        Reference::Recording::sortFrames(_theirs.frames);
    }
    void take(const Steps::Copy& /*copy*/) {
        PipelineRecording copy = _recording;
        _recording = std::move(copy);
        _theirs.play = {};
    }
    void take(const Steps::MoveOut& move) {
        PipelineRecording other = move.isAssigned ? PipelineRecording() : std::move(_recording);
        if (move.isAssigned)
            other = std::move(_recording);
        _recording.pipeline = other.pipeline;
        _theirs.frames.clear();
        _theirs.play = {};
    }
    void take(const Steps::CopySome& some) {
        if (!_copy)
            _copy.emplace(some.count);
        if (!_copy->copySome(_recording, some.count))
            return;
        _recording = std::move(_copy->recording());
        _copy.reset();
        _theirs.play = {};
        _difference = differenceOfFrames(_recording.frames(), _theirs.frames);
    }
    void take(const Steps::Counters& counters) { _seen.setCounters(counters.count); }
    void take(const Steps::Batch& batch) { _difference = _seen.differenceOfStamps(nextTime(), batch.count); }
    void take(const Steps::WriteAndRead& /*write*/) {
        const Ref<Data> ours = _recording.json();
        const std::string theirs = Reference::writeContainer(_theirs);
        if (ours->bytes().find("Unrepresentable") != std::string_view::npos)
            return; // what stands for a value without a form in JSON is each one's own
        if (nlohmann::json::parse(ours->bytes()) != nlohmann::json::parse(theirs))
            _difference = "text of the container";
        if (!scanContainer(ours->bytes()))
            _difference = "what is written is not read in the usual, fast way";
        takeOver(PipelineRecording(ours.get()), Reference::readContainer(theirs));
    }
    void take(const Steps::PlayReset& /*reset*/) {
        _recording.playReset();
        _theirs.playReset();
    }
    void take(const Steps::Play& play) {
        for (std::uint32_t i = 0; i < play.count && _difference.empty(); ++i) {
            const std::string ours = thrownBy([&] { _recording.playNextFrame(play.speed); });
            const std::string theirs = thrownBy([&] { _theirs.playNextFrame(play.speed); });
            if (ours != theirs || _recording.playCanContinue() != _theirs.playCanContinue())
                _difference = "end of playback";
            else if (storyClock().pausesUs != _theirs.sleeps)
                _difference = "pauses of playback";
            else
                _difference = _seen.differenceAfterFrame();
            storyClock().pausesUs.clear();
            _theirs.sleeps.clear();
            if (!ours.empty())
                return;
            ++_frames;
        }
    }

    std::uint64_t nextTime() {
        _theirs.hostTime = storyClock().ticks += kStoryStepNs;
        return storyClock().ticks;
    }
    void send(const std::vector<std::uint8_t>& report) {
        const std::uint64_t time = nextTime();
        _recording.handleInputReport(time, report.data(), report.size());
        _theirs.handleInputReport(time, report);
    }

    static Reference::Recording makeTheirs() {
        Reference::Recording recording;
        recording.pipeline = std::make_shared<Reference::Pipeline>();
        return recording;
    }

    Pipeline _ours;
    PipelineRecording _recording;
    std::optional<RecordingCopy> _copy;
    Reference::Recording _theirs = makeTheirs();
    Observed _seen;
    std::string _difference;
    std::uint64_t _frames = 0;
};

} // namespace

Comparison compare(const Story& story) {
    Both both(story.isLogged);
    Comparison comparison;
    for (std::size_t i = 0; i < story.steps.size() && comparison.difference.empty(); ++i) {
        comparison.difference = both.tell(story.steps[i]);
        if (!comparison.difference.empty())
            comparison.difference += " in step " + std::to_string(i);
    }
    if (comparison.difference.empty())
        comparison.difference = both.end();
    comparison.frames = both.frames();
    return comparison;
}

Comparison compareContainer(std::string_view text) {
    std::optional<PipelineRecording> ours;
    std::list<Reference::Frame> theirs;
    const std::string ourRefusal = thrownBy([&] { ours.emplace(makeRef<Data>(std::string(text)).get()); });
    const std::string theirRefusal = thrownBy([&] { theirs = Reference::readContainer(text); });
    if (ourRefusal != theirRefusal)
        return {"refusal: '" + ourRefusal + "' and '" + theirRefusal + "'"};
    if (!ours)
        return {};
    std::string difference = differenceOfFrames(ours->frames(), theirs);
    if (!difference.empty())
        return {difference};
    Both both(false);
    const auto count = static_cast<std::uint32_t>(theirs.size());
    both.takeOver(std::move(*ours), std::move(theirs));
    for (const Step& step : {Step(Steps::Callbacks{0x1FF}), Step(Steps::PlayReset{}), Step(Steps::Play{1, count}),
                             Step(Steps::WriteAndRead{})}) {
        if (difference.empty())
            difference = both.tell(step);
    }
    return {difference, both.frames()};
}

namespace {

// Leaves out ever smaller stretches of `parts` as long as `fails` says yes of what is left.
template <class Parts, class Fails>
void leaveOut(Parts& parts, Fails fails) {
    for (std::size_t length = parts.size(); length > 0; length /= 2) {
        for (std::size_t at = 0; at < parts.size();) {
            const Parts whole = parts;
            const auto from = parts.begin() + static_cast<std::ptrdiff_t>(at);
            parts.erase(from, from + static_cast<std::ptrdiff_t>(std::min(length, parts.size() - at)));
            if (fails())
                continue;
            parts = whole;
            at += length;
        }
    }
}

} // namespace

Story shortened(Story story) {
    const auto fails = [&story] { return !compare(story).difference.empty(); };
    leaveOut(story.steps, fails);
    for (std::size_t i = 0; i < story.steps.size(); ++i) {
        for (auto* images = std::get_if<Steps::Images>(&story.steps[i]); images != nullptr && images->count > 1;) {
            --images->count;
            if (fails())
                continue;
            ++images->count;
            break;
        }
    }
    return story;
}

std::string shortened(std::string container) {
    leaveOut(container, [&container] { return !compareContainer(container).difference.empty(); });
    return container;
}

} // namespace VeltoTouch::Tests
