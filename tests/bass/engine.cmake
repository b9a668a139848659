tul_test(engine_test EngineTest.cpp LINK bass)
