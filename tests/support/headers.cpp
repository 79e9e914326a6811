// Compiles the headers of tests/CMakeLists.txt; the tests reuse what comes of it.
