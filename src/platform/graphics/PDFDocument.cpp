#include "platform/graphics/PDFDocument.h"

#include <memory>
#include <string>

// The C interface: clang cannot take the C++ headers of this library in C++23.
#include <qpdf/qpdf-c.h>

namespace platform {

namespace {

struct DocumentCloser {
    void operator()(qpdf_data document) const { qpdf_cleanup(&document); }
};

} // namespace

bool PDFDocument::needsPassword(std::string_view insteadOf) const {
    const std::unique_ptr<_qpdf_data, DocumentCloser> document(qpdf_init());
    qpdf_silence_errors(document.get());
    qpdf_set_suppress_warnings(document.get(), QPDF_TRUE);
    const std::string_view bytes = data_.bytes();
    const QPDF_ERROR_CODE outcome =
        qpdf_read_memory(document.get(), "attachment", bytes.data(), bytes.size(), std::string(insteadOf).c_str());
    if ((outcome & QPDF_ERRORS) == 0) return false;
    // A damaged document opens for nobody, and no password would change that.
    return qpdf_get_error_code(document.get(), qpdf_get_error(document.get())) == qpdf_e_password;
}

} // namespace platform
