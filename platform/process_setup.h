// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace stalwick {

// What a program that writes files does first, before it opens anything: writes to which the system
// would respond by ending the process (a file at the limit of its size, a pipe that nobody reads)
// or by asking a question become errors of that write. Standard streams that the caller closed are
// occupied, so that no message can go into an output.
void PrepareProcess();

}  // namespace stalwick
