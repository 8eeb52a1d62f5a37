#include "programs/export/RichTextJSON.h"

#include <string_view>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "platform/files/FileWrapper.h"
#include "programs/export/FileSize.h"
#include "programs/export/JSONValues.h"
#include "programs/export/ParagraphStyleJSON.h"
#include "richtext/TextEditing.h"

namespace quillet {

using json = nlohmann::ordered_json;
using platform::AttributedString;
using platform::AttributeSet;
using platform::Range;
using platform::TextAttachmentReference;

namespace {

json jsonFromAttachment(const AttachmentRun& run) {
    const platform::TextAttachment& attachment = *run.attachment;
    const auto& wrapper = attachment.fileWrapper();
    std::string name = wrapper ? wrapper->preferredFilename() : std::string();
    if (wrapper && name.empty()) name = wrapper->filename();
    const std::size_t size = wrapper                 ? sizeOfFiles(*wrapper)
                             : attachment.contents() ? attachment.contents()->size()
                                                     : 0;
    json form{{"location", run.range.location},
              {"class", attachment.className()},
              {"name", std::move(name)},
              {"type", attachment.fileType()},
              {"size", size}};
    if (const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(&attachment)) {
        form["on"] = box->isOn();
        form["indentationLevel"] = box->indentationLevel();
    }
    return form;
}

// The values of one text's attributes. Attachments are asked for in text order.
class AttributeValues {
  public:
    explicit AttributeValues(const std::vector<AttachmentRun>& attachments) : attachments_(attachments) {}

    json object(const AttributeSet& attributes, Range run) {
        position_ = run.location;
        json form = json::object();
        for (const auto& [name, value] : attributes.entries()) form[name.string()] = std::visit(*this, value);
        return form;
    }

    json operator()(std::int64_t integer) const { return integer; }
    json operator()(double real) const { return real; }
    json operator()(const std::u16string& text) const { return platform::utf8FromUTF16(text); }
    json operator()(const platform::URL& url) const { return url.absoluteString(); }
    json operator()(const platform::Font& font) const {
        return {{"name", font.fontName()}, {"size", font.pointSize()}};
    }
    json operator()(const platform::Color& color) const { return jsonFromColor(color); }
    json operator()(const platform::ParagraphStyleReference& style) {
        return style ? jsonFromParagraphStyle(*style, objects_) : json();
    }
    json operator()(const TextAttachmentReference& attachment) {
        if (!attachment) return nullptr;
        while (next_ < attachments_.size() && attachments_[next_].range.end() <= position_) ++next_;
        return next_;
    }
    json operator()(const platform::Shadow& shadow) const {
        json form{{"offsetX", shadow.offsetX()}, {"offsetY", shadow.offsetY()}, {"blurRadius", shadow.blurRadius()}};
        if (shadow.color()) form["color"] = jsonFromColor(*shadow.color());
        return form;
    }
    json operator()(const std::vector<std::int64_t>& numbers) const { return numbers; }

  private:
    const std::vector<AttachmentRun>& attachments_;
    std::size_t next_ = 0; // the first attachment that does not end before the current run
    std::size_t position_ = 0;
    ParagraphObjects objects_;
};

// Runs repeat their paragraph style in full: as a tree all of them would take many times the room of their text, so
// each is written as soon as it is made.
std::string runsOf(const AttributedString& text, const std::vector<AttachmentRun>& attachments) {
    std::string runs;
    AttributeValues values(attachments);
    text.enumerateAttributes({0, text.length()}, [&](const AttributeSet& attributes, Range run) {
        runs += runs.empty() ? "" : ",";
        runs += jsonText(
            {{"location", run.location}, {"length", run.length}, {"attributes", values.object(attributes, run)}});
    });
    return runs;
}

std::string objectOf(const AttributedString& text, std::string_view rest) {
    const std::vector<AttachmentRun> attachments = attachmentsOf(text);
    json files = json::array();
    for (const AttachmentRun& run : attachments) files.push_back(jsonFromAttachment(run));
    return R"({"text":)" + jsonText(platform::utf8FromUTF16(text.string())) + R"(,"runs":[)" +
           runsOf(text, attachments) + R"(],"attachments":)" + jsonText(files).append(rest) + "}";
}

} // namespace

std::string richTextJSON(const AttributedString& text) {
    return objectOf(text, {});
}

std::string richTextJSON(const AttributedString& text, const platform::Value& noteAttributes) {
    return objectOf(text, R"(,"noteAttributes":)" + jsonText(jsonFromValue(noteAttributes)));
}

} // namespace quillet
