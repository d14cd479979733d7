#include "apps/zq/Program.h"
#include "host/engine/os/standardDescriptors.h"

int main(int count, char** values) {
    engine::openStandardDescriptors();
    std::vector<std::string> const arguments(values + (count > 0 ? 1 : 0), values + count);
    return zq::runProgram(arguments);
}
