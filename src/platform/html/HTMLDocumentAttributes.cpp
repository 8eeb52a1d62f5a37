#include "platform/html/HTMLDocumentAttributes.h"

#include <array>
#include <charconv>
#include <chrono>
#include <string>

#include <fmt/format.h>

#include "platform/html/HTMLReader.h"

namespace platform {

namespace {

enum class MetaKind : std::uint8_t { text, words, date };

struct MetaRow {
    std::string_view name, key;
    MetaKind kind;
};

constexpr auto kMeta = std::to_array<MetaRow>({
    {"author", "NSAuthorDocumentAttribute", MetaKind::text},
    {"lastauthor", "NSEditorDocumentAttribute", MetaKind::text},
    {"company", "NSCompanyDocumentAttribute", MetaKind::text},
    {"copyright", "NSCopyrightDocumentAttribute", MetaKind::text},
    {"subject", "NSSubjectDocumentAttribute", MetaKind::text},
    {"description", "NSCommentDocumentAttribute", MetaKind::text},
    {"comment", "NSCommentDocumentAttribute", MetaKind::text},
    {"keywords", "NSKeywordsDocumentAttribute", MetaKind::words},
    {"creationtime", "NSCreationTimeDocumentAttribute", MetaKind::date},
    {"modificationtime", "NSModificationTimeDocumentAttribute", MetaKind::date},
    {"cocoaversion", "CocoaRTFVersion", MetaKind::text},
});

// Parted by ", ", else by ",", else by blanks.
Array keywords(std::string_view text) {
    std::string_view separator = " ";
    if (text.find(',') != std::string_view::npos) separator = ",";
    if (text.find(", ") != std::string_view::npos) separator = ", ";
    Array words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (end > 0) words.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + separator.size(), text.size()));
    }
    return words;
}

// YYYY-MM-DDThh:mm:ssZ and nothing else.
std::optional<Date> date(std::string_view text) {
    constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:ddZ";
    if (text.size() != kForm.size()) return std::nullopt;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (kForm[i] == 'd' ? text[i] < '0' || text[i] > '9' : text[i] != kForm[i]) return std::nullopt;
    const auto part = [text](std::size_t at, std::size_t length) {
        int value = 0;
        std::from_chars(text.data() + at, text.data() + at + length, value);
        return value;
    };
    const std::chrono::year_month_day day{std::chrono::year(part(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(part(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(part(8, 2)))};
    if (!day.ok() || part(11, 2) > 23 || part(14, 2) > 59 || part(17, 2) > 60) return std::nullopt;
    const auto seconds = std::chrono::sys_days(day).time_since_epoch() + std::chrono::hours(part(11, 2)) +
                         std::chrono::minutes(part(14, 2)) + std::chrono::seconds(part(17, 2));
    return Date::fromUnixTime(static_cast<double>(std::chrono::duration_cast<std::chrono::seconds>(seconds).count()));
}

void addMeta(Dictionary& attributes, std::string_view name, std::string_view content) {
    const std::string lower = asciiLowerCase(name);
    for (const MetaRow& row : kMeta) {
        if (row.name != lower) continue;
        if (row.kind == MetaKind::text) {
            attributes.insert_or_assign(std::string(row.key), Value(content));
        } else if (row.kind == MetaKind::words) {
            attributes.insert_or_assign(std::string(row.key), Value(keywords(content)));
        } else if (const auto moment = date(content)) {
            attributes.insert_or_assign(std::string(row.key), Value(*moment));
        }
    }
}

} // namespace

Dictionary htmlDocumentAttributes(const HTMLDocument& page, const std::optional<CssRGBA>& background) {
    Dictionary attributes;
    attributes.emplace(kDocumentTypeDocumentAttribute, "NSHTML");
    attributes.emplace(kCharacterEncodingDocumentAttribute, page.encoding());
    for (auto at = page.head(); at != HTMLDocument::kNone; at = page.following(at, page.head())) {
        if (!page.isElement(at)) continue;
        if (page[at].tag == HTMLTag::title)
            attributes.insert_or_assign(std::string(kTitleDocumentAttribute), Value(page.textContent(at)));
        const auto name = page.attribute(at, HTMLAttribute::name), content = page.attribute(at, HTMLAttribute::content);
        if (page[at].tag == HTMLTag::meta && name && content) addMeta(attributes, *name, *content);
    }
    if (background) {
        const auto byte = [](double component) { return static_cast<int>(component * 255 + 0.5); };
        std::string text =
            fmt::format("#{:02x}{:02x}{:02x}", byte(background->red), byte(background->green), byte(background->blue));
        if (background->alpha < 1) text += fmt::format("{:02x}", byte(background->alpha));
        attributes.emplace(kBackgroundColorDocumentAttribute, text);
    }
    return attributes;
}

} // namespace platform
