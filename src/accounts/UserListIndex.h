#pragma once

#include "platform/values/Value.h"

#include <mutex>
#include <string>
#include <unordered_map>

namespace quillmark {

/// The "UserName" of an entry of the user list; null when the entry is not a record, or its name not a text.
const std::string *userNameOf(const Value &entry);

/// Whether the entry is a record of that name.
bool isRecordOf(std::string_view userName, const Value &entry);

/// Finds records by user name without a walk over the list. It keeps the places in the list that it was last asked
/// about, and a share of that list: while that is so, no other list can lie at the same place in memory.
///
/// Concurrency: any thread.
class UserListIndex {
public:
    static UserListIndex &sharedIndex();

    /// The list's first record of that name; nothing when there is none, or when what is given is not a list.
    Value recordOf(std::string_view userName, const Value &list);

private:
    std::mutex m_mutex;
    Value m_list;
    std::unordered_map<std::string_view, size_t> m_places; ///< by names that lie in the list
};

} // namespace quillmark
