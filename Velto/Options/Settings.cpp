#include "Velto/Options/Settings.h"

#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/ConfigurationEntry.h"
#include "Velto/Options/Keys.h"
#include "Velto/Options/Suggestion.h"
#include "Velto/Output/Terminal.h"

#include <stdexcept>
#include <tuple>

namespace VeltoTouch::Velto {
namespace {

using Verdict = Judgement::Verdict;

[[noreturn]] void refuse(const std::string& what) { throw std::invalid_argument(what); }

void requireUsable(const Judgement& judgement, const std::string& key, const std::vector<std::string>& keys) {
    if (judgement.verdict == Verdict::Unknown && judgement.reason.empty())
        refuse("unknown key" + didYouMean(key, keys));
    if (judgement.verdict != Verdict::Sensible && judgement.verdict != Verdict::Doubtful)
        refuse(judgement.reason);
}

} // namespace

Setting parseSetting(std::string_view text, KeyScope scope) {
    const auto equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0)
        refuse("KEY=VALUE is wanted");
    const std::string_view value = text.substr(equals + 1);
    Ref<Value> parsed = JSON::parse(value);
    if (!parsed)
        parsed = makeRef<String>(std::string(value));
    Setting setting{.key = std::string(text.substr(0, equals)), .value = std::move(parsed)};
    const bool isOutside = scope == KeyScope::Pipeline && !Keys::belowPipeline(setting.key);
    requireUsable(isOutside ? Judgement{.verdict = Verdict::Unknown, .reason = {}}
                            : judgeWrite(setting.key, setting.value.get()),
                  setting.key, writableKeys());
    return setting;
}

void requireReadable(const std::string& key) {
    if (key.empty())
        refuse("a key is wanted");
    requireUsable(judgeRead(key), key, readableKeys());
}

void requireServed(const std::string& key) {
    if (const auto name = Keys::below(kKeysDomain, key))
        std::ignore = keyPlaceCalled(*name);
    else
        requireReadable(key);
}

void warnOfDoubtfulSettings(const std::vector<Setting>& settings) {
    for (const Setting& setting : settings) {
        const Judgement judgement = judgeWrite(setting.key, setting.value.get());
        if (judgement.verdict == Verdict::Doubtful)
            complain(setting.key, judgement.reason);
    }
}

} // namespace VeltoTouch::Velto
