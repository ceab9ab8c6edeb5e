// The free runtime's own; clang needs no declarations for a block that is only type-checked.
