// Makes this program's SQLite pass for the first one with which stores have a write-ahead log, so that what
// goes on in and around the log is tested with older ones, too. They are not safe with a log where
// connections are at work at the same instant, which is why only tests of one thread are run so.

#include <sqlite3.h>

// The library takes the program's function instead of SQLite's.
extern "C" __attribute__((visibility("default"))) int sqlite3_libversion_number() { return 3'051'003; }
