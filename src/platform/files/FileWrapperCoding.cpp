#include "platform/files/FileWrapperCoding.h"

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/ClassRegistry.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/files/FileWrapper.h"

namespace platform {

namespace {

constexpr std::string_view kDataKey = "NSFileWrapperData";

void encodeFileWrapper(KeyedArchiver& archiver, const FileWrapper& wrapper) {
    archiver.encodeObject(kDataKey, Value(Data(wrapper.serializedRepresentation())));
}

// A wrapper that cannot be read is nil: what refers to it stays, without its file.
Result<ArchivedObject> decodeFileWrapper(const ArchivedFields& fields) {
    const auto bytes = fields.decodeBytes(kDataKey);
    if (!bytes) return ArchivedObject();
    const auto wrapper = FileWrapper::fromSerializedRepresentation(*bytes);
    return wrapper ? ArchivedObject(*wrapper) : ArchivedObject();
}

} // namespace

void registerArchivableFileWrapper() {
    ClassRegistry::shared().add({"NSFileWrapper",
                                 {"NSFileWrapper", "NSObject"},
                                 {},
                                 typeid(FileWrapper),
                                 true,
                                 encoderOf<FileWrapper>(encodeFileWrapper),
                                 decodeFileWrapper});
}

} // namespace platform
