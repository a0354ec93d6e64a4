# Tests of the node library.
