// SPDX-License-Identifier: BSD-3-Clause

// Reads and decodes a whole recording and does nothing else: decode RECORDING
// What bench/inspect.py holds stalwick-inspect against.

#include <cstdio>
#include <string>
#include <vector>

#include "ord/ord_file_reader.h"
#include "platform/text_encoding.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: decode RECORDING\n");
        return 2;
    }
    stalwick::ORDFileReader reader;
    std::vector<stalwick::ORDDataPacket> packets;
    std::int32_t result = reader.Open(stalwick::FromUtf8(argv[1]));
    std::size_t count = 0;
    for (bool endOfFile = false; result == 0 && !endOfFile; count += packets.size()) {
        result = reader.GetData(packets, endOfFile);
    }
    if (result != 0) {
        std::fprintf(stderr, "%s: %s\n", argv[1],
                     stalwick::ToUtf8(reader.GetErrorMessage()).c_str());
        return 1;
    }
    std::printf("%zu packets\n", count);
    return 0;
}
