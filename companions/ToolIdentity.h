#pragma once

/// What a tool of the product says of itself inside its own file, so that no tool can be installed under another one's
/// name. The text is one that occurs nowhere else: its parts are never put together like this by another tool.
#define QUILLMARK_TOOL_MARK "\x01Quillmark tool "
#define QUILLMARK_TOOL_IDENTITY(NAME, VERSION)                                                                         \
    extern "C" {                                                                                                       \
    [[gnu::used, gnu::retain, gnu::section(".quillmark")]] extern const char quillmarkToolIdentity[] =                 \
        QUILLMARK_TOOL_MARK NAME " " VERSION "\x01";                                                                   \
    }
