#pragma once

#include <cstddef>
#include <cstdint>

namespace quillmark {

// What the launcher and its root helper say to each other, over a pair of connected sockets that keep messages apart
// (SOCK_SEQPACKET). The helper's end is its standard input. It greets first, so that a program that merely ended with a
// status of the password dialog's is not taken for it; then it answers each request with one status.
//
// A request is the program's absolute path and its arguments, each ended by a zero byte. One descriptor may come with
// it, which becomes the program's standard output. Or it is kHelperWait with its zero byte, which is answered when one
// of the started programs has ended, any that has not been told of.

inline constexpr char kHelperGreeting[] = "quillmark root helper 2";
inline constexpr char kHelperWait[] = "wait";

/// Bytes of a request at the most, and texts in it.
inline constexpr size_t kHelperMaximumRequest = size_t{64} * 1024;
inline constexpr size_t kHelperMaximumTexts = 256;

/// An answer: 0, or the `errno` of the start that failed. To a wait the status as `waitpid` gives it, or
/// kHelperNoProgram.
using HelperAnswer = int32_t;
inline constexpr HelperAnswer kHelperNoProgram = -1;

} // namespace quillmark
