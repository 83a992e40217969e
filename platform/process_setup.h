#pragma once

namespace stalwick {

// What a program that writes files does first, before it opens anything: a write that the system
// would answer with the end of the process (a file at the limit of its size, a pipe that nobody
// reads) or with a question becomes an error of that write, and standard streams that the caller
// closed are occupied, so that no message can go into an output.
void PrepareProcess();

}  // namespace stalwick
