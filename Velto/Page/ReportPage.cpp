#include "Velto/Page/ReportPage.h"

#include "Velto/Page/Document.h"
#include "Velto/Page/JSONText.h"
#include "Velto/Page/RecordingPage.h"

#include <fmt/format.h>

namespace VeltoTouch::Page {
namespace {

std::string textsArray(const std::vector<std::string>& texts) {
    return arrayOf(texts, [](const std::string& text) { return quoted(text); });
}

std::string caseObject(const Case& each) {
    return fmt::format(R"({{"kind":{},"startNs":{},"file":{},"texts":{},"explanations":{},"picture":{}}})",
                       quoted(each.kind), each.startNs, quoted(each.file), textsArray(each.texts),
                       textsArray(each.picture.explanations),
                       each.picture.members.empty() ? "null" : '{' + each.picture.members + '}');
}

} // namespace

std::size_t Picture::size() const noexcept {
    std::size_t size = members.size();
    for (const std::string& text : explanations)
        size += text.size();
    return size;
}

void PictureBounds::apply(Picture& picture) {
    if (picture.members.empty())
        return;
    _bytes += picture.size();
    if (_left > 0 && _bytes <= kMostPictureBytes) {
        --_left;
        return;
    }
    _left = 0;
    picture = {};
}

std::string reportPage(const Report& report) {
    return document(fmt::format(R"({{"kind":"report","title":{},"text":{},"table":{},"groups":{},"surface":{}}})",
                                quoted(report.title), quoted(report.text), arrayOf(report.table, textsArray),
                                arrayOf(report.groups,
                                        [](const Group& group) {
                                            return fmt::format(R"({{"title":{},"cases":{}}})", quoted(group.title),
                                                               arrayOf(group.cases, caseObject));
                                        }),
                                surfaceObject()));
}

} // namespace VeltoTouch::Page
