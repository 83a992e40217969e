// SPDX-License-Identifier: BSD-3-Clause

// Names and places of every kind that a file system accepts.

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>
#include <limits.h>

#include "tests/support/engine_run.h"
#include "tests/support/faulty_file_calls.h"
#include "tests/trust/command_run.h"
#include "tests/trust/recordings.h"

namespace stalwick::test {
namespace {

namespace fs = std::filesystem;

// A recording of this name in a directory of this name. The control characters that names have
// here, as they appear in a header line.
std::string WrittenOut(std::string path) {
    const auto replace = [&path](const std::string& control, const std::string& text) {
        for (auto at = path.find(control); at != std::string::npos; at = path.find(control)) {
            path.replace(at, control.size(), text);
        }
    };
    replace("\n", "\\n");
    replace("\t", "\\t");
    replace("\r", "\\r");
    replace("\x1b", "\\x1b");
    return path;
}

void ExpectToConvert(const std::string& directoryName, const std::string& fileName,
                     const TempDirectory& root = TempDirectory()) {
    SCOPED_TRACE(testing::PrintToString(fileName));
    const std::string base = ToUtf8(root.Path()) + "/" + directoryName;
    fs::create_directories(base);
    const std::string input = base + "/" + fileName;
    const std::string recording = MakeFullRecording(3, 3);
    WriteFile(FromUtf8(input), recording);
    const CommandResult result = RunCommand({"--all", "-o", base, "--", input});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(result.output, "Processing complete\n");
    // One line, whatever the names contain.
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
    EXPECT_EQ(ReadFile(FromUtf8(input)), recording);
    const std::string name = fileName.substr(0, fileName.rfind('.'));
    EXPECT_EQ(FilesIn(FromUtf8(base + "/" + name)).size(), 24U);
    const std::string header = ReadFile(FromUtf8(base + "/" + name + "/CSC1.vcs"));
    EXPECT_NE(header.find("-OriginalFileName \"" + WrittenOut(base + "/" + name) + "/CSC1.vcs\""),
              std::string::npos);
}

TEST(PathNames, OfAnyCharactersConvert) {
    for (const char* name : {"with blanks  .ord", "quotes\"'`.ord", "new\nline\ttab\r.ord",
                             "\xC3\xA4\xE2\x82\xAC\xF0\x9F\xA6\x87.ord", "not \xFF utf-8 \xC3.ord",
                             "back\\slash.ord", "-dash.ord", "*?[a]$HOME;&|.ord", "a.b.c.ord",
                             "%s%n%d.ord", "\x1B[31m.ord", "..ord.ord"}) {
        ExpectToConvert("plain", name);
        ExpectToConvert(std::string("dir ") + name, "rec.ord");
    }
}

TEST(PathNames, OfTheGreatestLengthConvert) {
    ExpectToConvert(std::string(NAME_MAX, 'd'), std::string(NAME_MAX - 4, 'n') + ".ord");
}

// The longest path that the system accepts is that of one output.
TEST(PathNames, PathsOfTheGreatestLengthConvert) {
    const TempDirectory root;
    const std::string beginning = ToUtf8(root.Path()) + "/";
    const std::string end = "/rec/Ultrasonic.vcs";  // no output has a longer name
    const std::size_t length = PATH_MAX - 1 - beginning.size() - end.size();
    std::string directories;
    while (directories.size() + NAME_MAX < length) directories += std::string(100, 'p') + "/";
    directories += std::string(length - directories.size(), 'q');
    ExpectToConvert(directories, "rec.ord", root);
    std::size_t longest = 0;
    for (const std::string& name : NamesIn(root.Path(FromUtf8(directories + "/rec")))) {
        longest = std::max(longest, (beginning + directories + "/rec/" + name).size());
    }
    EXPECT_EQ(longest, std::size_t{PATH_MAX - 1});
}

TEST(PathNames, PathsThatTheSystemRefusesAreNamed) {
    const CommandScene scene(MakeFullRecording(3, 3));
    const std::string tooLong = ToUtf8(scene.OutputDirectory()) + "/" + std::string(300, 'x');
    const CommandResult output = RunCommand({"-o", tooLong, ToUtf8(scene.InputPath())});
    EXPECT_EQ(output.exitStatus, 2);
    EXPECT_NE(output.error.find("File name too long"), std::string::npos) << output.error;
    const CommandResult input =
        RunCommand({"-o", ToUtf8(scene.OutputDirectory()), std::string(5000, 'y') + ".ord"});
    EXPECT_EQ(input.exitStatus, 1);
    EXPECT_NE(input.error.find("File name too long"), std::string::npos) << input.error;
}

TEST(InputAndOutputDirectory, MayBeTheSame) {
    const CommandScene scene(MakeFullRecording(3, 3));
    const std::string in = ToUtf8(scene.InputPath());
    const std::string before = ReadFile(scene.InputPath());
    EXPECT_EQ(RunCommand({"--all", in}).exitStatus, 0);
    EXPECT_EQ(RunCommand({"--all", in}).exitStatus, 0);
    EXPECT_EQ(ReadFile(scene.InputPath()), before);
    EXPECT_EQ(FilesIn(FromUtf8(in.substr(0, in.size() - 4))).size(), 48U);
}

TEST(InputAndOutputDirectory, RecordingNamedLikeItsDirectoryStays) {
    const TempDirectory root;
    const std::string input = ToUtf8(root.Path()) + "/rec";  // without an extension
    const std::string recording = MakeFullRecording(3, 3);
    WriteFile(FromUtf8(input), recording);
    const CommandResult result = RunCommand({"--all", input});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.error.find("it has no extension"), std::string::npos) << result.error;
    EXPECT_EQ(ReadFile(FromUtf8(input)), recording);
}

TEST(SymbolicLink, InPlaceOfAnOutputIsNeverFollowed) {
    const CommandScene scene(MakeFullRecording(3, 3));
    MakeDirectory(scene.RecordingDirectory());
    const fs::path rec = ToUtf8(scene.RecordingDirectory());
    const fs::path aim = ToUtf8(scene.OutputDirectory()) + "/precious";
    const fs::path nowhere = ToUtf8(scene.OutputDirectory()) + "/nowhere";
    WriteFile(FromUtf8(aim.string()), "precious");
    fs::create_symlink(aim, rec / "CSC1.vcs");
    fs::create_symlink(nowhere, rec / "Events.vev");
    fs::create_symlink("RawData.vrd", rec / "RawData.vrd");  // a circle
    EXPECT_EQ(scene.Run().exitStatus, 0);
    EXPECT_EQ(ReadFile(FromUtf8(aim.string())), "precious");
    EXPECT_FALSE(fs::exists(nowhere));
    for (const char* name : {"CSC1_01.vcs", "Events_01.vev", "RawData_01.vrd"}) {
        EXPECT_TRUE(fs::is_regular_file(rec / name)) << name;
    }
}

// Somebody else creates a link there between the choice of the name and the creation of the file.
TEST(SymbolicLink, ThatComesInBetweenIsNeverFollowed) {
    const TempDirectory directory;
    const fs::path aim = ToUtf8(directory.Path(L"precious"));
    WriteFile(directory.Path(L"precious"), "precious");
    FaultyFileCalls disk;
    disk.beforeCreate = [&](const std::wstring& path) {
        const fs::path target = ToUtf8(path);
        if (target.filename().string().find("_0") != std::string::npos) return;
        std::error_code thereAlready;
        fs::create_symlink(aim, target, thereAlready);
    };
    const EngineRun run = RunEngine(directory, MakeFullRecording(3, 3), AllOutputs());
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_EQ(ReadFile(directory.Path(L"precious")), "precious");
    EXPECT_TRUE(run.files.contains("CSC1_01.vcs"));
}

bool Tells(const EngineRun& run, const std::string& text) {
    return std::any_of(run.details.begin(), run.details.end(), [&](const ConversionDetail& detail) {
        return detail.kind == ConversionDetail::Kind::kIncomplete &&
               ToUtf8(detail.text).find(text) != std::string::npos;
    });
}

TEST(VanishedDirectory, IsNamedAndFailsTheConversion) {
    const TempDirectory directory;
    FaultyFileCalls disk;
    disk.beforeCreate = [&](const std::wstring& path) {
        if (path.find(L"CSC3") == std::wstring::npos) return;
        fs::remove_all(ToUtf8(directory.Path(L"out")));
    };
    const EngineRun run = RunEngine(directory, MakeFullRecording(5, 3), AllOutputs());
    EXPECT_EQ(run.statusText, L"Processing failed");
    EXPECT_TRUE(Tells(run, "CSC3.vcs: No such file or directory"));
    EXPECT_TRUE(Tells(run, "CSC2.vcs: removed during the conversion"));
    EXPECT_EQ(disk.openCount, 0U);
}

// Writing into files without a name succeeds: nobody could find them afterwards.
TEST(VanishedDirectory, OutputsThatAreRemovedWhileTheyAreWrittenAreMissed) {
    const TempDirectory directory;
    FaultyFileCalls disk;
    disk.beforeRead = [&](unsigned readCount) {
        if (readCount == 2) fs::remove_all(ToUtf8(directory.Path(L"out")));
    };
    const EngineRun run = RunEngine(directory, MakeFullRecording(3, 200), AllOutputs());
    EXPECT_EQ(run.statusText, L"Processing failed");
    ASSERT_FALSE(run.details.empty());
    for (const wchar_t* name : {L"CSC1.vcs to CSC3.vcs", L"Ultrasonic.vcs", L"Base_MZ.vcs",
                                L" and Events.vev: removed during the conversion; convert"}) {
        EXPECT_NE(run.details[0].text.find(name), std::wstring::npos) << run.details[0].text;
    }
    EXPECT_EQ(disk.openCount, 0U);
}

TEST(VanishedDirectory, OneRemovedOutputIsMissedAndTheOthersAreWhole) {
    const TempDirectory directory;
    const std::string recording = MakeFullRecording(3, 600);
    FaultyFileCalls disk;
    disk.beforeRead = [&](unsigned readCount) {
        if (readCount == 2) fs::remove(ToUtf8(directory.Path(L"out")) + "/rec/RawData.vrd");
    };
    const EngineRun run = RunEngine(directory, recording, AllOutputs());
    EXPECT_EQ(run.statusText, L"Processing complete");
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_EQ(run.details[0].kind, ConversionDetail::Kind::kIncomplete);
    EXPECT_NE(run.details[0].text.find(L"RawData.vrd is incomplete: cannot keep"),
              std::wstring::npos);
    std::map<std::string, std::string> others =
        RunReference(directory, recording, AllOutputs()).files;
    EXPECT_EQ(others.erase("RawData.vrd"), 1U);
    EXPECT_TRUE(SameFiles(run.files, others));
}

}  // namespace
}  // namespace stalwick::test
