// How much the store in an SQLite database costs beside statements of SQLite alone, on tables of the same
// layout.

#include "bench/sqlite/Suites.hpp"

int main(int argc, char** argv) {
    bench::Session session(argc, argv);
    bench::describeSqlite();
    bench::measureSqliteReading(session);
    bench::measureSqliteWriting(session);
    bench::measureSqliteSequence(session);
    bench::measureSqliteMoves(session);
    return session.exitCode();
}
