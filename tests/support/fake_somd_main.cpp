// A tiny stand-alone fake SOM service for the package consumer test: it
// serves inside the QEL_SYSROOT given as its argument, answers every request
// with result 0 and "long;ReturnValue;7;", and exits after one request or
// ten seconds.
#include <unistd.h>

#include <cstdio>

#include "support/fake_som_service.h"

int main() {
    qel_test::TempSysroot root;  // also exports QEL_SYSROOT for the printout
    qel_test::FakeSomService service(root);
    service.Push(qel_test::Action::Answer("long;ReturnValue;7;"));
    std::printf("%s\n", root.root().c_str());
    std::fflush(stdout);
    for (int i = 0; i < 100 && service.RequestCount() == 0; ++i) usleep(100000);
    usleep(200000);  // let the reply drain
    return service.RequestCount() == 1 ? 0 : 1;
}
