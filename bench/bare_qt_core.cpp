// The least that a program of Qt Core takes: a text, and the end.

#include <QString>
#include <cstdio>

int main(int argc, char ** /*arguments*/) { return QString::number(argc).size() == 1 ? 0 : 1; }
