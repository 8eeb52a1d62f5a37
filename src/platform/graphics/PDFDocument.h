// Counterpart of PDFDocument, as far as passwords go.
#pragma once

#include <string_view>

#include "platform/base/Data.h"

namespace platform {

class PDFDocument {
  public:
    explicit PDFDocument(Data data) : data_(std::move(data)) {}

    // Whether it takes a password to open. A document that restricts only printing or changes takes none, and so do
    // bytes that are no readable document. Reads the cross-reference table, at most all of the bytes.
    bool isLocked() const { return needsPassword(""); }
    // Whether the password, as user or as owner, opens a locked document.
    bool unlockWithPassword(std::string_view password) const { return !needsPassword(password); }

  private:
    bool needsPassword(std::string_view insteadOf) const;

    Data data_;
};

} // namespace platform
