tarnwick_test(indexer_test indexer_update_test.cpp tree_walk_test.cpp ../storage/index_dump.cpp LIBRARIES tarnwick_indexer
              tarnwick_test_support)
