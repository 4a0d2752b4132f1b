#pragma once

struct zlib_filefunc64_def_s;

namespace quillmark {

/// How minizip reads an archive's file: seeking costs nothing, and small reads come from memory. minizip goes to and
/// fro between the archive's directory and its entries, byte by byte, which makes up a third of the time where entries
/// are small if each turn is a question to the system. Only regular files are opened, since others may let it wait.
const zlib_filefunc64_def_s &archiveStreamFunctions();

} // namespace quillmark
