// How much virtual storage costs beside the look-up, the memory copy or the call of the system that it stands
// for.

#include "bench/storage/Suites.hpp"

int main(int argc, char** argv) {
    bench::Session session(argc, argv);
    bench::measureStorageFiles(session);
    bench::measureStorageFolders(session);
    return session.exitCode();
}
