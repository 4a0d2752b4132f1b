// The least that a C++ program takes: a text, and the end.

#include <string>

int main(int argc, char ** /*arguments*/) { return std::to_string(argc).size() == 1 ? 0 : 1; }
