// Note packages in their serialized form: whatever can be read is written, and once it has been written, reading and
// writing it again changes nothing.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "documents/QLTNoteFile.h"
#include "documents/attachments/AttachmentCoding.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Environment.h"
#include "platform/text/TextDump.h"
#include "styles/NoteTextStyleCoding.h"
#include "styles/base/Colors.h"

using namespace platform;
using namespace quillet;

namespace {

void prepare() {
    static const bool prepared = [] {
        registerArchivableAttachmentClasses();
        registerArchivableStyleClasses();
        registerHighlightColorAssets();
        Environment::current().preferencesDirectory = "/nonexistent";
        setSystemLogSink([](std::string_view) {});
        return true;
    }();
    (void)prepared;
    // The identifiers of each run count from one again.
    Environment::current().newUUID = [counter = std::uint8_t{}]() mutable {
        UUID uuid;
        uuid.bytes.back() = ++counter;
        return uuid;
    };
}

[[noreturn]] void failed(const char* what, const Error& error) {
    std::fprintf(stderr, "%s: %s\n", what, error.description().c_str());
    std::abort();
}

std::shared_ptr<FileWrapper> written(const QLTNoteFile& note) {
    const auto package = note.fileWrapper();
    if (!package) failed("writing", package.error());
    return *package;
}

std::unique_ptr<QLTNoteFile> readAgain(const FileWrapper& package) {
    auto note = QLTNoteFile::initWithFileWrapper(package);
    if (!note) failed("reading again", note.error());
    return *std::move(note);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    prepare();
    const auto package = FileWrapper::fromSerializedRepresentation({reinterpret_cast<const char*>(data), size});
    if (!package) return 0;
    const auto note = QLTNoteFile::initWithFileWrapper(**package);
    if (!note) return 0;
    const auto settled = readAgain(*written(**note));
    const auto again = readAgain(*written(*settled));
    const std::string before = textDump(settled->noteText()), after = textDump(again->noteText());
    if (after == before) return 0;
    std::fprintf(stderr, "settled:\n%s\nwritten and read again:\n%s\n", before.c_str(), after.c_str());
    std::abort();
}
