// The reader's machine: what a group makes when its text is complete, which is links, list markers, attachments and
// pictures.
#include <algorithm>
#include <memory>
#include <utility>

#include <fmt/format.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/CodePage.h"
#include "platform/rtf/RTFReading.h"
#include "platform/rtf/RTFWriter.h"

namespace platform {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The address in a field's instruction: HYPERLINK "address", or HYPERLINK \l "place in this document".
std::string hyperlinkAddress(std::string_view instruction) {
    constexpr std::string_view kWord = "HYPERLINK";
    const std::size_t begin = instruction.find_first_not_of(' ');
    if (begin == std::string_view::npos || !instruction.substr(begin).starts_with(kWord)) return {};
    std::string_view rest = instruction.substr(begin + kWord.size());
    std::string address, place;
    bool wantsPlace = false, passesNext = false;
    while (!rest.empty()) {
        if (rest.front() == ' ') {
            rest.remove_prefix(1);
            continue;
        }
        const bool quoted = rest.front() == '"';
        if (quoted) rest.remove_prefix(1);
        const std::size_t end = std::min(rest.find(quoted ? '"' : ' '), rest.size());
        const std::string_view argument = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (!quoted && argument.starts_with('\\')) {
            wantsPlace = argument == "\\l";
            passesNext = argument == "\\o" || argument == "\\t";
        } else if (std::exchange(passesNext, false)) {
            continue;
        } else if (std::exchange(wantsPlace, false)) {
            place = argument;
        } else if (address.empty()) {
            address = argument;
        }
    }
    return place.empty() ? address : address + "#" + place;
}

} // namespace

void RTFReading::beginFieldResult() {
    if (group_.field == 0) return;
    const std::string address = hyperlinkAddress(fields_[group_.field - 1].instruction);
    if (!address.empty()) group_.characters.link = builder_.addLink(address);
}

void RTFReading::endMarker() {
    if (!options_.textListMarkers) return;
    const bool ours = marker_.size() > 1 && marker_.front() == u'\t' && marker_.back() == u'\t';
    if (ours) return builder_.append(marker_, group_.characters);
    while (!marker_.empty() && (marker_.back() == u'\t' || marker_.back() == u' ')) marker_.pop_back();
    builder_.setForeignMarker(marker_);
}

void RTFReading::endGraphic() {
    graphicWaits_ = true;
    if (graphicName_.ends_with(' ')) graphicName_.pop_back();
}

// The picture stands where its placeholder is; without one, before what follows.
void RTFReading::placeGraphic() {
    if (!std::exchange(graphicWaits_, false) || !package_) return;
    std::string name = graphicName_;
    if (!isValidUTF8(name))
        if (const auto decoded = decodeBytes(name, codePageName(document_.codePage))) name = utf8FromUTF16(*decoded);
    if (const auto file = package_->childNamed(name); file && name != kRTFDTextName)
        builder_.appendAttachment(std::make_shared<TextAttachment>(file), group_.characters);
}

void RTFReading::pictureText(std::string_view digits) {
    for (const char c : digits) {
        const int digit = hexDigit(c);
        if (digit < 0) continue;
        if (pictureDigit_ < 0) {
            pictureDigit_ = digit;
        } else {
            picture_ += static_cast<char>(pictureDigit_ * 16 + digit);
            pictureDigit_ = -1;
        }
    }
}

// Pictures of formats that need no drawing program become files of their own.
void RTFReading::endPicture() {
    if (picture_.empty() || pictureExtension_.empty() || group_.destination != RTFDestination::body) return;
    placeGraphic();
    auto file = FileWrapper::regularFile(Data(std::move(picture_)));
    picture_.clear();
    file->setPreferredFilename(++pictures_ == 1 ? fmt::format("Image.{}", pictureExtension_)
                                                : fmt::format("Image {}.{}", pictures_, pictureExtension_));
    builder_.appendAttachment(std::make_shared<TextAttachment>(std::move(file)), group_.characters);
}

} // namespace platform
