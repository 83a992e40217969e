#pragma once

#include <charconv>
#include <string>

#include "writers/file_writer_container.h"

namespace stalwick {

// The header lines that every output begins with, each ended by CR LF; docs/output-files.md lists
// them. `fileClosed` prints the time of this call as the closing time. Control
// characters of the file's path are written out: a name may not forge a line.
std::wstring BuildFileHeader(const FileWriterContainer& container, bool fileClosed,
                             const OutputFileRecord& record, std::uint8_t fileType,
                             const std::wstring& fileVersion);

// Name of a VtxDataType; "Invalid" for any other value.
std::wstring DataTypeName(std::uint8_t fileType);

// Lower-case hexadecimal in groups of 8-4-4-4-12.
std::wstring FormatUuid(const Uuid& bytes);

// `text` between double quotes; a quote that is there already is not repeated.
std::wstring QuoteFileName(const std::wstring& text);

// A header line: key, blank, value, CR LF.
std::wstring HeaderLine(const std::wstring& key, const std::wstring& value);

// The number as streams print it in that notation; `precision` 6 of `general` is their default.
// The same digits on every platform.
std::wstring FormatDouble(double value, std::chars_format notation, int precision);

}  // namespace stalwick
