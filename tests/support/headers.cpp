// Exists only to precompile the headers that tests/CMakeLists.txt lists.
