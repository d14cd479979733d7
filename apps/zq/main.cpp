#include "apps/zq/Program.h"

int main(int count, char** values) {
    std::vector<std::string> const arguments(values + (count > 0 ? 1 : 0), values + count);
    return zq::runProgram(arguments);
}
