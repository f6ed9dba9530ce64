// A second process for the named-mutex tests. It makes one Mutex of the
// name in its argument and answers commands read from standard input, one
// per line, with one line each:
//   lock MS   Lock(MS): "locked" or "timeout"
//   unlock    Unlock(): "unlocked"
//   die       ends the process at once, without unlocking or closing
//   exit      ends the program normally
// It says "ready" once the mutex exists.

#include "qvimanager/platform/mutex.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: mutex_holder NAME\n");
        return 2;
    }
    Utilities::Mutex mutex{Utilities::String(argv[1])};
    std::cout << "ready" << std::endl;
    std::string line;
    while (std::getline(std::cin, line)) {
        if (line.rfind("lock ", 0) == 0) {
            std::cout << (mutex.Lock(std::atol(line.c_str() + 5)) ? "locked" : "timeout") << std::endl;
        } else if (line == "unlock") {
            mutex.Unlock();
            std::cout << "unlocked" << std::endl;
        } else if (line == "die") {
            _exit(0);
        } else if (line == "exit") {
            break;
        } else {
            std::cout << "unknown command: " << line << std::endl;
        }
    }
    return 0;
}
