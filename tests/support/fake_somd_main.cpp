// A small stand-alone fake SOM service: it serves inside a fresh temporary
// QEL_SYSROOT, prints that directory on its first output line, answers every
// request with result 0 and "long;ReturnValue;7;", and exits after the
// number of requests given as its argument (default 1) or ten seconds.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "support/fake_som_service.h"

int main(int argc, char** argv) {
    const std::size_t expected = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1;
    qel_test::TempSysroot root;
    qel_test::FakeSomService service(root);
    for (std::size_t i = 0; i < expected; ++i) {
        service.Push(qel_test::Action::Answer("long;ReturnValue;7;"));
    }
    std::printf("%s\n", root.root().c_str());
    std::fflush(stdout);
    for (int i = 0; i < 100 && service.RequestCount() < expected; ++i) usleep(100000);
    service.WaitForIdle();
    return service.RequestCount() == expected ? 0 : 1;
}
