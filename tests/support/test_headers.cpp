// SPDX-License-Identifier: BSD-3-Clause

// Empty: CMake precompiles headers only for a target that compiles something.
