// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "outputs/vtx_data_types.h"
#include "writers/data_file.h"

namespace Veltrosyn {

// The data file library: writes the channel files (.vcs) and the event file (.vev). A file is a
// block of header text followed by the records as handed over (docs/output-files.md).
//
// An object may hold many open files, each identified by its handle. Used by one thread. Every
// result except 0 is a failure; Files() has the reasons.
//
// With a pool, which must outlive the object, channel records are at the start of one of its
// blocks. WriteDataToFile hands the block over; a failure may be reported by a later call on that
// file, CloseAllOutputFiles at the latest.
class VtxFileIO {
  public:
    explicit VtxFileIO(const stalwick::OutputSettings& settings = {},
                       stalwick::BlockPool* pool = nullptr);
    virtual ~VtxFileIO();
    VtxFileIO(const VtxFileIO&) = delete;
    VtxFileIO& operator=(const VtxFileIO&) = delete;

    // Creates the file; it must not exist. `flag` has no effect.
    [[nodiscard]] VtxDataTypes::VtxRetVal OpenVtxOutputFile(const wchar_t* fileName,
                                                            VtxDataTypes::VtxDataType dataType,
                                                            int& handle, int flag);

    // Sets the file's header; the last one stays. At most 16,384 bytes as UTF-8.
    [[nodiscard]] VtxDataTypes::VtxRetVal SetHeader(int handle, const wchar_t* headerText);

    // Appends records; `length` is their size in bytes.
    [[nodiscard]] VtxDataTypes::VtxRetVal WriteDataToFile(int handle, VtxDataTypes::CRRec* records,
                                                          int length);
    [[nodiscard]] VtxDataTypes::VtxRetVal WriteDataToFile(int handle,
                                                          VtxDataTypes::EventRec* records,
                                                          int length);

    // Completes every file of this object and closes its handle; the headers stay. Fails if any of
    // the files failed to close, or failed before.
    VtxDataTypes::VtxRetVal CloseAllOutputFiles();

    // Truncates a file's records to their first `length` bytes if there are more.
    VtxDataTypes::VtxRetVal CutDataTo(int handle, std::uint64_t length);

    // Waits for everything handed over; fails if any of the files has failed by then.
    VtxDataTypes::VtxRetVal CompleteWrites();

    // Waits until all files' data are on the disk, unless the settings specify otherwise. Many
    // files are synced at a time once a sync has to wait: one after another, each would.
    [[nodiscard]] VtxDataTypes::VtxRetVal SyncFiles();

    // All files of this object, including closed ones, in the order of opening; one that could not
    // be created comes before those still open.
    [[nodiscard]] std::vector<stalwick::OutputFileState> Files() const;
    [[nodiscard]] stalwick::OutputTotals Totals() const;

  private:
    stalwick::DataFile* Find(int handle);

    stalwick::OutputSettings settings_;
    stalwick::BlockPool* pool_;
    std::vector<std::unique_ptr<stalwick::DataFile>> files_;  // a handle is a position here
    std::vector<std::unique_ptr<stalwick::DataFile>> closed_;
};

}  // namespace Veltrosyn
