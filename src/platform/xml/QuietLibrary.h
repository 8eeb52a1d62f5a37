// Keeps libxml2 from writing to standard error, which it does about bytes that are not of their encoding, whatever
// handlers its parser has. Such trouble is in the parser's outcome, from where it is reported.
#pragma once

#include <libxml/xmlerror.h>

namespace platform {

// For the calling thread, as long as it lives.
class QuietLibrary {
  public:
    QuietLibrary()
        : structured_(xmlStructuredError), structuredContext_(xmlStructuredErrorContext), generic_(xmlGenericError),
          genericContext_(xmlGenericErrorContext) {
        xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {});
        xmlSetGenericErrorFunc(nullptr, ignore);
    }
    ~QuietLibrary() {
        xmlSetStructuredErrorFunc(structuredContext_, structured_);
        xmlSetGenericErrorFunc(genericContext_, generic_);
    }
    QuietLibrary(const QuietLibrary&) = delete;
    QuietLibrary& operator=(const QuietLibrary&) = delete;

  private:
    static void ignore(void*, const char*, ...) {} // the library's type for it is variadic

    xmlStructuredErrorFunc structured_;
    void* structuredContext_;
    xmlGenericErrorFunc generic_;
    void* genericContext_;
};

} // namespace platform
