#include "accounts/UserListIndex.h"

#include "accounts/KeyList.h"

namespace quillmark {

const std::string *userNameOf(const Value &entry) {
    return valueOf(entry.dictionary(), kUserUserName).as<std::string>();
}

bool isRecordOf(std::string_view userName, const Value &entry) {
    const std::string *name = userNameOf(entry);
    return name != nullptr && *name == userName;
}

UserListIndex &UserListIndex::sharedIndex() {
    static auto &instance = *new UserListIndex; // never destroyed: other threads may ask until the very end
    return instance;
}

Value UserListIndex::recordOf(std::string_view userName, const Value &list) {
    const std::scoped_lock lock(m_mutex);
    if (list.as<List>() != m_list.as<List>()) {
        m_places.clear(); // its names lie in the former list
        m_list = list;
        for (size_t place = 0; place < list.list().size(); ++place) {
            if (const std::string *name = userNameOf(list.list()[place])) {
                m_places.emplace(*name, place); // the first of a name stays
            }
        }
    }
    const auto place = m_places.find(userName);
    return place != m_places.end() ? m_list.list()[place->second] : Value();
}

} // namespace quillmark
