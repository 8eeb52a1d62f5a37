#include "platform/rtf/RTFWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>

#include "platform/files/FileWrapper.h"
#include "platform/rtf/RTFAttachments.h"
#include "platform/rtf/RTFBody.h"
#include "platform/rtf/RTFVocabulary.h"

namespace platform {

namespace {

std::optional<double> number(const Dictionary& attributes, std::string_view key) {
    const Value* value = find(attributes, key);
    if (!value || (!value->as<double>() && !value->as<std::int64_t>())) return std::nullopt;
    return value->doubleValue();
}

// "{595, 842}"
std::optional<std::array<double, 2>> size(const Dictionary& attributes, std::string_view key) {
    const Value* value = find(attributes, key);
    if (!value) return std::nullopt;
    const std::string digits = value->utf8();
    std::array<double, 2> numbers{};
    const char* position = digits.data();
    const char* const end = position + digits.size();
    for (double& length : numbers) {
        while (position != end && (*position == '{' || *position == ',' || *position == ' ')) ++position;
        const auto result = std::from_chars(position, end, length);
        if (result.ec != std::errc()) return std::nullopt;
        position = result.ptr;
    }
    return numbers;
}

struct LengthWord {
    std::string_view key, word;
};
constexpr LengthWord kMarginWords[] = {
    {kLeftMarginDocumentAttribute, "\\margl"},
    {kRightMarginDocumentAttribute, "\\margr"},
    {kTopMarginDocumentAttribute, "\\margt"},
    {kBottomMarginDocumentAttribute, "\\margb"},
};

void twips(std::string_view word, double points, RTFOutput& out) {
    out.word(word, std::llround(points * kTwipsAPoint));
}

// Page and view, of the attributes that are given; no line when none is.
void writeDocumentWords(const Dictionary& attributes, RTFOutput& out) {
    const std::size_t before = out.string().size();
    if (const auto paper = size(attributes, kPaperSizeDocumentAttribute)) {
        twips("\\paperw", (*paper)[0], out);
        twips("\\paperh", (*paper)[1], out);
    }
    for (const LengthWord& margin : kMarginWords)
        if (const auto length = number(attributes, margin.key)) twips(margin.word, *length, out);
    if (const auto view = size(attributes, kViewSizeDocumentAttribute)) {
        twips("\\vieww", (*view)[0], out);
        twips("\\viewh", (*view)[1], out);
    }
    if (const auto mode = number(attributes, kViewModeDocumentAttribute)) out.word("\\viewkind", std::llround(*mode));
    if (out.string().size() > before) out.raw('\n');
    const auto interval = number(attributes, kDefaultTabIntervalDocumentAttribute);
    if (interval && *interval > 0) {
        twips("\\deftab", *interval, out);
        out.raw('\n');
    }
}

std::string rtf(const AttributedString& text, Range range, const Dictionary& documentAttributes,
                const std::vector<RTFDEntry>* entries) {
    RTFBody body(text, range, entries);
    body.write();
    RTFOutput out;
    out.string().reserve(RTFBody::kUsualHeadSize);
    out.raw("{\\rtf1\\ansi\\ansicpg1252\\cocoartf2822\n\\cocoatextscaling0\\cocoaplatform0");
    body.fonts().write(out);
    body.colors().write(out);
    body.lists().write(out);
    writeDocumentWords(documentAttributes, out);
    std::string whole = std::move(body.string()); // has room for the head
    whole.insert(0, out.string());
    whole += '}';
    return whole;
}

} // namespace

Result<std::string> rtfFromRange(const AttributedString& text, Range range, const Dictionary& documentAttributes) {
    return rtf(text, range, documentAttributes, nullptr);
}

Result<std::shared_ptr<FileWrapper>> rtfdFileWrapperFromRange(const AttributedString& text, Range range,
                                                              const Dictionary& documentAttributes,
                                                              const std::vector<RTFDEntry>& entries) {
    auto package = FileWrapper::directory();
    package->setFileWrapper(std::string(kRTFDTextName),
                            FileWrapper::regularFile(Data(rtf(text, range, documentAttributes, &entries))));
    for (const RTFDEntry& entry : entries) {
        if (entry.name == kRTFDTextName) continue; // never over the text
        package->setFileWrapper(entry.name, fileForEntry(entry));
    }
    return package;
}

} // namespace platform
