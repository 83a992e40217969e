// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <map>
#include <set>
#include <string>

namespace stalwick::test {

/** A new directory, removed with its contents at the end. Paths are wide, as the program
 * takes them. */
class TempDirectory {
  public:
    TempDirectory();
    ~TempDirectory();
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;

    const std::wstring& Path() const { return path_; }
    /** The path of something inside. */
    std::wstring Path(const std::wstring& name) const;

  private:
    std::wstring path_;
};

void WriteFile(const std::wstring& path, const std::string& bytes);
std::string ReadFile(const std::wstring& path);
void MakeDirectory(const std::wstring& path);
void RemoveFile(const std::wstring& path);
bool Exists(const std::wstring& path);
/** UTF-8 names of everything in the directory; empty if the directory does not exist. */
std::set<std::string> NamesIn(const std::wstring& directory);
/** Every file of the directory with its bytes. */
std::map<std::string, std::string> FilesIn(const std::wstring& directory);

}  // namespace stalwick::test
