#include "platform/Path.h"

namespace quillmark {

QString withoutNeedlessSlashes(const QString &path) {
    QString result;
    result.reserve(path.size());
    for (const QChar character : path) {
        if (character != u'/' || !result.endsWith(u'/')) {
            result += character;
        }
    }
    return result.size() > 1 && result.endsWith(u'/') ? result.chopped(1) : result;
}

QString lastPathComponent(const QString &path) {
    const QString plain = withoutNeedlessSlashes(path);
    return plain == u"/" ? plain : plain.mid(plain.lastIndexOf(u'/') + 1);
}

QString deletingLastPathComponent(const QString &path) {
    const QString plain = withoutNeedlessSlashes(path);
    const qsizetype slash = plain.lastIndexOf(u'/');
    return slash == 0 ? QStringLiteral("/") : plain.left(qMax(slash, qsizetype{0}));
}

QString appendingPathComponent(const QString &folder, const QString &name) {
    return withoutNeedlessSlashes(folder.isEmpty() ? name : folder + u'/' + name);
}

} // namespace quillmark
