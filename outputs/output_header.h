// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stalwick {

// The header of an output file as a value: its lines of key and value (docs/output-files.md).
class OutputHeader {
  public:
    // Reads a header block of kOutputHeaderSize bytes. Returns what is wrong with it ("its header
    // has no -FileType line"), or nothing. After a fault the header is unchanged.
    [[nodiscard]] std::wstring Read(std::string_view block);

    // The whole text, including the end of every line.
    const std::wstring& Text() const { return text_; }

    // The text after the key and one blank on the first line with that key; none without such a
    // line. A key begins with "-".
    [[nodiscard]] std::optional<std::wstring> Find(std::wstring_view key) const;

    // The same for a line that is known to exist: those that every header has.
    [[nodiscard]] std::wstring Value(std::wstring_view key) const {
        return Find(key).value_or(L"");
    }
    // The same as an unsigned integer; none if the text is anything else.
    [[nodiscard]] std::optional<std::uint64_t> Number(std::wstring_view key) const;

    // Whether -TimeClosed holds a time. The event file's never does.
    [[nodiscard]] bool SaysClosed() const;

  private:
    std::wstring text_;
};

}  // namespace stalwick
