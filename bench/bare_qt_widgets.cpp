// The least that a program with a window takes: an empty one, shown until somebody ends the program.

#include <QApplication>
#include <QDialog>

int main(int count, char **arguments) {
    const QApplication application(count, arguments);
    QDialog window;
    window.resize(600, 400);
    window.show();
    return QApplication::exec();
}
