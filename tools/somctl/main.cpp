// somctl: operate the SOM service from the command line.
#include <iostream>

#include "somctl.h"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    return somctl::RunSomctl(args, std::cout, std::cerr);
}
