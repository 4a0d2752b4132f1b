#include "accounts/UserListIndex.h"

#include "accounts/KeyList.h"

namespace quillmark {

QString userNameOf(const QVariant &entry) {
    const QVariant name = entry.toMap().value(kUserUserName);
    return name.typeId() == QMetaType::QString ? name.toString() : QString();
}

bool isRecordOf(const QString &userName, const QVariant &entry) {
    const QString name = userNameOf(entry);
    return !userName.isNull() && !name.isNull() && userName == name; // a null text and an empty one are equal
}

UserListIndex &UserListIndex::sharedIndex() {
    static auto &instance = *new UserListIndex; // never destroyed: other threads may ask until the very end
    return instance;
}

std::optional<QVariantMap> UserListIndex::recordOf(const QString &userName, const QVariantList &list) {
    const std::scoped_lock lock(m_mutex);
    if (list.constData() != m_list.constData() || list.size() != m_list.size()) {
        m_list = list;
        m_places.clear();
        for (qsizetype place = list.size() - 1; place >= 0; --place) { // so that the first of a name wins
            if (const QString name = userNameOf(list[place]); !name.isNull()) {
                m_places.insert(name, place);
            }
        }
    }
    const auto place = m_places.constFind(userName);
    return !userName.isNull() && place != m_places.cend() ? std::optional(list[*place].toMap()) : std::nullopt;
}

} // namespace quillmark
