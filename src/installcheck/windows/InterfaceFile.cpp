#include "installcheck/windows/InterfaceFile.h"

#include "branding/windows/QuillmarkHeaderView.h"
#include "platform/process/AtEnd.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDialog>
#include <QFile>
#include <QUiLoader>
#include <QXmlStreamReader>

namespace quillmark {

namespace {

constexpr qint64 kLargestFile = 1 << 20; // bytes; ours has some 5,000
constexpr int kDeepest = 100;            // elements in each other; ours has 12. Qt's reader calls itself for each

/// Knows the header view, too.
class InterfaceLoader final : public QUiLoader {
public:
    explicit InterfaceLoader(const HeaderBranding &branding) : m_branding(branding) {}

    QWidget *createWidget(const QString &className, QWidget *parent, const QString &name) override {
        if (className == QLatin1StringView("quillmark::QuillmarkHeaderView")) {
            auto *const header = new QuillmarkHeaderView(m_branding, parent);
            header->setObjectName(name);
            return header;
        }
        return QUiLoader::createWidget(className, parent, name);
    }

private:
    const HeaderBranding &m_branding;
};

QStringList *complaints = nullptr; ///< where collect() puts them, while it is installed

/// Takes what Qt complains of, instead of letting it on standard error: widgets of unknown classes, properties that are
/// none.
void collect(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &message) {
    complaints->append(message.endsWith(u'.') ? message.chopped(1) : message);
}

/// Builds what the document describes. \param found receives what Qt complains of.
QWidget *built(QByteArray &document, const HeaderBranding &branding, QStringList &found) {
    // A loader of windows would begin by loading what a designer of windows may have, with whole libraries behind it.
    const QStringList plugIns = QCoreApplication::libraryPaths();
    QCoreApplication::setLibraryPaths({});
    const AtEnd restored([&plugIns] { QCoreApplication::setLibraryPaths(plugIns); });
    InterfaceLoader loader(branding);
    complaints = &found;
    const AtEnd told([before = qInstallMessageHandler(collect)] { qInstallMessageHandler(before); });
    QBuffer buffer(&document);
    return loader.load(&buffer);
}

/// Why Qt's reader can't be given that document; null when it can.
QString damageOf(const QByteArray &document) {
    if (document.size() > kLargestFile) {
        return QStringLiteral("it is larger than %1 bytes").arg(kLargestFile);
    }
    QXmlStreamReader reader(document);
    int depth = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        depth += reader.isStartElement() ? 1 : 0;
        depth -= reader.isEndElement() ? 1 : 0;
        if (depth > kDeepest) {
            return QStringLiteral("more than %1 elements lie in each other in line %2")
                .arg(kDeepest)
                .arg(reader.lineNumber());
        }
    }
    return reader.hasError() ? QStringLiteral("line %1: %2").arg(reader.lineNumber()).arg(reader.errorString())
                             : QString();
}

} // namespace

QDialog *loadInterface(const QString &path, const HeaderBranding &branding, QStringList &problems) {
    if (path.isEmpty()) {
        problems << QStringLiteral("the interface file \"InstallCheck.ui\" is missing");
        return nullptr;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problems << QStringLiteral("the interface file \"%1\" can't be read: %2").arg(path, file.errorString());
        return nullptr;
    }
    QByteArray document = file.read(kLargestFile + 1);
    if (const QString damage = damageOf(document); !damage.isNull()) {
        problems << QStringLiteral("the interface file \"%1\" is damaged: %2").arg(path, damage);
        return nullptr;
    }
    QStringList found;
    QWidget *const root = built(document, branding, found);
    for (const QString &complaint : found) {
        problems << QStringLiteral("in \"%1\": %2").arg(path, complaint);
    }
    auto *const window = qobject_cast<QDialog *>(root);
    if (window == nullptr) {
        delete root;
        problems << QStringLiteral("the interface file \"%1\" holds no window").arg(path);
    }
    return window;
}

} // namespace quillmark
