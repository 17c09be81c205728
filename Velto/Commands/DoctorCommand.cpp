#include "Platform/JSON.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/Examination.h"
#include "Velto/Options/PlayOptions.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kDoctorText =
    "Goes the way from the surface to the key and stops at the first thing that is wrong. It says\n"
    "what to do about it. All is well if the surface is plugged in, its node may be opened, its\n"
    "service runs, reports come, a touch turns on, it becomes a gesture, there is a keyboard, a\n"
    "key is pressed, somebody reads it. On a terminal, or with --wait, it asks for a touch.\n"
    "If all is well, the lines are the surface's status. The exit status is 1 if something\n"
    "is wrong.\n"
    "\n"
    "Without --device it is the first surface that is plugged in; a made-up one that is served\n"
    "(velto serve --device sim) only where none is.";

constexpr std::chrono::seconds kUsualWait{10};

struct DoctorOptions {
    ServedChoice served;
    std::optional<HostTime> wait; // none: a person alone is asked
    bool jsonl = false;
};

std::string_view nameOf(Finding::Verdict verdict) noexcept {
    using enum Finding::Verdict;
    return verdict == Yes ? "yes" : verdict == No ? "no" : "unasked";
}

void writeLine(const ExaminationStep& step, const Finding& finding) {
    const bool isNo = finding.verdict == Finding::Verdict::No;
    writeStandardOutput(fmt::format(R"({{"kind":"check","check":"{}","result":"{}","text":{}{}}})"
                                    "\n",
                                    step.check, nameOf(finding.verdict), JSON::quoted(finding.text),
                                    isNo ? R"(,"advice":)" + JSON::quoted(finding.advice) : ""));
}

// The checks of one line are written together, as far as they are well.
class Sheet {
public:
    // Called before a check is made: it may take its time.
    void begin(std::string_view line) {
        if (line != _line)
            end();
        _line = line;
    }
    void add(const Finding& finding) {
        if (finding.verdict != Finding::Verdict::No) {
            _text += (_text.empty() ? "" : ", ") + printable(finding.text);
            return;
        }
        end();
        writeStandardOutput(fmt::format("{}        {}\n          {}\n", coloured(Colour::Red, "NO"),
                                        printable(finding.text), printable(finding.advice)));
    }
    void end() {
        if (!_text.empty())
            writeStandardOutput(fmt::format("{:<10}{}\n", _line, _text));
        _text.clear();
    }

private:
    std::string_view _line;
    std::string _text;
};

Finding make(const ExaminationStep& step, Examination& examination) {
    try {
        return step.make(examination);
    } catch (const Bus::NoAnswer&) { // it has begun to hang
        return examination.noAnswer();
    }
}

int examine(const DoctorOptions& options) {
    const bool isForPerson = !options.jsonl && standardOutputIsTerminal();
    const HostTime wait = options.wait.value_or(isForPerson ? HostTime(kUsualWait) : HostTime());
    Examination examination({.served = options.served,
                             .wait = std::chrono::duration_cast<std::chrono::microseconds>(wait),
                             .askForTouch = [wait] {
                                 writeErrorLine(fmt::format("touch the surface now ({:g} s)", Seconds(wait).count()));
                             }});
    Sheet sheet;
    for (const ExaminationStep& step : examinationSteps()) {
        sheet.begin(step.line);
        const Finding finding = make(step, examination);
        if (options.jsonl)
            writeLine(step, finding);
        else
            sheet.add(finding);
        if (finding.verdict == Finding::Verdict::No)
            return 1;
    }
    sheet.end();
    return 0;
}

} // namespace

Command makeDoctorCommand(App& program) {
    const auto options = std::make_shared<DoctorOptions>();
    App* app =
        program.addCommand("doctor", {"velto doctor", "velto doctor --wait 10 --jsonl | jq -r .advice"}, kDoctorText);
    addServed(*app, options->served);
    addSeconds(*app, "--wait", options->wait,
               "Ask for a touch and wait so long (default: 10 on a terminal, else nobody is asked)");
    app->add_flag("--jsonl", options->jsonl, "JSON Lines, one a check");
    return {app, [options] { return examine(*options); }};
}

} // namespace VeltoTouch::Velto
