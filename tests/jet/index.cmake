# Tests of the index layer.
spares_test(index_key_test SOURCES index_key_test.cpp LINK jet)
spares_test(index_tree_test SOURCES index_tree_test.cpp LINK jet)
