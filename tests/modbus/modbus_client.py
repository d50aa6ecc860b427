#!/usr/bin/python3
# modbus_client.py PORT UNIT [COUNTER]: reads the register map with pymodbus
# (with COUNTER: until the readings counter differs, 10 s at most) while 100
# idle clients, one sending garbage and one never reading its replies stay
# connected; prints the registers and the exception codes as JSON.
import json, socket, struct, sys, time
from pymodbus.client import ModbusTcpClient

port, unit = int(sys.argv[1]), int(sys.argv[2])
crowd = [socket.create_connection(("127.0.0.1", port)) for _ in range(100)]
crowd[0].sendall(b"GET / HTTP/1.0\r\n\r\n" * 50)
request = struct.pack(">HHHBBHH", 1, 0, 6, unit, 4, 0, 21)
crowd[1].sendall(request * 2000 + request[:5])
client = ModbusTcpClient("127.0.0.1", port=port, timeout=3)
deadline = time.monotonic() + 10
while True:
    regs = client.read_input_registers(0, 21, slave=unit).registers
    if len(sys.argv) < 4 or regs[14] != int(sys.argv[3]) or time.monotonic() > deadline:
        break
    time.sleep(0.1)
code = lambda reply: getattr(reply, "exception_code", 0)
print(json.dumps({
    "input": regs,
    "holding": client.read_holding_registers(0, 21, slave=unit).registers,
    "past": code(client.read_input_registers(20, 2, slave=unit)),
    "tooMany": code(client.read_holding_registers(0, 126, slave=unit)),
    "write": code(client.write_register(0, 1, slave=unit)),
}))
