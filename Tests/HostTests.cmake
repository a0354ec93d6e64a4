# Tests of the host's libraries.
