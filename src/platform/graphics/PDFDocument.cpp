#include "platform/graphics/PDFDocument.h"

#include <exception>
#include <string>

// The library asks which of its two smart pointers a program means: the standard one.
#define POINTERHOLDER_TRANSITION 4
#include <qpdf/JSON.hh> // clang wants the whole type where the next header only names it
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>

namespace platform {

bool PDFDocument::needsPassword(std::string_view insteadOf) const {
    QPDF document;
    document.setSuppressWarnings(true);
    const std::string_view bytes = data_.bytes();
    try {
        document.processMemoryFile("attachment", bytes.data(), bytes.size(), std::string(insteadOf).c_str());
    } catch (const QPDFExc& problem) {
        return problem.getErrorCode() == qpdf_e_password;
    } catch (const std::exception&) { // a damaged document opens for nobody
        return false;
    }
    return false;
}

} // namespace platform
