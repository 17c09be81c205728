#include "Velto/Page/ReportPage.h"

#include "Velto/Page/Document.h"
#include "Velto/Page/JSONText.h"
#include "Velto/Page/RecordingPage.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Page {
namespace {

std::string textsArray(const std::vector<std::string>& texts) {
    return arrayOf(texts, [](const std::string& text) { return quoted(text); });
}

// Of a case but for its picture.
std::string caseMembers(const Case& each) {
    return fmt::format(R"("kind":{},"startNs":{},"file":{},"texts":{},"command":{})", quoted(each.kind),
                       each.time ? fmt::format("{}", each.time->fromNs) : "null", quoted(each.file),
                       textsArray(each.texts), quoted(each.command));
}

std::string caseObject(const Case* each) {
    return fmt::format(R"({{{},"explanations":{},"picture":{}}})", caseMembers(*each),
                       textsArray(each->picture.explanations),
                       each->picture.members.empty() ? "null" : '{' + each->picture.members + '}');
}

// What JSON takes in a page, where a "<" is six letters (Document.h).
std::size_t sizeInPage(std::string_view json) {
    return json.size() + 5 * static_cast<std::size_t>(std::ranges::count(json, '<'));
}

} // namespace

void Group::add(std::vector<Case> cases) {
    if (cases.empty())
        return;
    _total += cases.size();
    _kept += cases.size();
    const auto place = std::ranges::upper_bound(_recordings, cases.size(), std::greater(), &std::vector<Case>::size);
    _recordings.insert(place, std::move(cases));
    while (_kept - _recordings.back().size() >= kMostListed) {
        _kept -= _recordings.back().size();
        _recordings.pop_back();
    }
}

std::vector<Case*> Group::listed() {
    std::vector<Case*> listed;
    std::size_t bytes = 0;
    for (std::vector<Case>& recording : _recordings) {
        for (Case& each : recording) {
            const std::size_t size = sizeInPage(caseMembers(each));
            if (listed.size() == kMostListed || bytes + size > kMostListedBytes)
                continue;
            bytes += size;
            listed.push_back(&each);
        }
    }
    return listed;
}

std::string Group::object() {
    return fmt::format(R"({{"title":{},"total":{},"cases":{}}})", quoted(_title), _total,
                       arrayOf(listed(), caseObject));
}

void PictureBounds::apply(Picture& picture) {
    const std::size_t size = sizeInPage(picture.members) + sizeInPage(textsArray(picture.explanations));
    if (size > kMostBytesOfOne)
        picture = {.explanations = {"No picture: it would be too large."}};
    else if (_bytes + size > kMostPictureBytes)
        picture = {.explanations = {"No picture: with it the page would be too large."}};
    else
        _bytes += size;
}

std::string reportPage(const Report& report) {
    return document(fmt::format(R"({{"kind":"report","title":{},"text":{},"table":{},"groups":{},"surface":{}}})",
                                quoted(report.title), quoted(report.text), arrayOf(report.table, textsArray),
                                arrayOf(report.groups, [](Group& group) { return group.object(); }), surfaceObject()));
}

} // namespace VeltoTouch::Page
