# Tests of the index layer.
spares_test(index_key_test SOURCES index_key_test.cpp LINK jet)
