#pragma once

#include <QHash>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <mutex>
#include <optional>

namespace quillmark {

/// The "UserName" of an entry of the user list; null when the entry is no record, or its name no text.
QString userNameOf(const QVariant &entry);

/// Whether the entry is a record of that name; a null name is nobody's.
bool isRecordOf(const QString &userName, const QVariant &entry);

/// Finds records by user name without a walk over the list. It keeps the places in the list that it was last asked
/// about, and a share of that list: while that is so, no other list can lie at the same place in memory.
///
/// Concurrency: any thread.
class UserListIndex {
public:
    static UserListIndex &sharedIndex();

    /// The list's first record of that name.
    std::optional<QVariantMap> recordOf(const QString &userName, const QVariantList &list);

private:
    std::mutex m_mutex;
    QVariantList m_list;
    QHash<QString, qsizetype> m_places;
};

} // namespace quillmark
