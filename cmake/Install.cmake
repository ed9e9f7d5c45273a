# To be filled: install rules, CMake package, pkg-config file.
