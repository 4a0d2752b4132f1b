#pragma once

namespace quillmark::fuzz {

/// While one is alive, the process ends with a message as soon as its heap has grown by more than that.
///
/// The sanitizers blur a process's resident memory (freed blocks stay in quarantine, each block has its shadow), so the
/// live bytes themselves are counted. One at a time.
class HeapLimit {
public:
    explicit HeapLimit(long mebibytes);
    HeapLimit(const HeapLimit &) = delete;
    HeapLimit &operator=(const HeapLimit &) = delete;
    ~HeapLimit();
};

} // namespace quillmark::fuzz
