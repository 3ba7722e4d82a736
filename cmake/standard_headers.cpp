// The precompiled header of cmake/options.cmake belongs to a target, and a target needs a source.
