#include "Pipeline/SettingKind.h"

#include "Shared/Util.h"

namespace VeltoTouch {

Algs::SettingKind settingKindOf(std::string key) {
    if (!Util::stripDomainFromKey(key, kPipelineDomain) || !Util::stripDomainFromKey(key, "Algs"))
        return Algs::SettingKind::Unknown;
    return Algs::settingKind(key);
}

} // namespace VeltoTouch
