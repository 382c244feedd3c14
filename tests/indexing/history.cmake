tarnwick_test(history_test history_test.cpp ../storage/index_dump.cpp LIBRARIES tarnwick_history tarnwick_retrieval tarnwick_indexer
                                                      tarnwick_test_support)
