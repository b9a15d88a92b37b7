// Makes this program's SQLite pass for the first one with which stores have a write-ahead log, so that what
// goes on in and around the log is tested with older ones, too. In them, connections that write and empty
// the log at the very same instant can damage the database; the tests with threads and processes have not met
// that.

#include <sqlite3.h>

// The library takes the program's function instead of SQLite's.
extern "C" __attribute__((visibility("default"))) int sqlite3_libversion_number() { return 3'051'003; }
