// Nothing of its own: the precompiled header of the tests needs a source to be compiled for.
