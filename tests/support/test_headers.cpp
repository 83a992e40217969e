// SPDX-License-Identifier: BSD-3-Clause

// Has nothing of its own: CMake precompiles headers for a target that compiles something.
