tul_test(engine_test EngineTest.cpp LINK bass)
tul_test(device_test DeviceTest.cpp LINK bass)
