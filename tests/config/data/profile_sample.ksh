[Hardware]
Name=Y cable
Manufacturer=Quorv
[Interface]
BaudRates=1200,9600
DataBits=7,8
Parity=N,E,O
StopBits=1,2
[Registry]
Port1=/dev/ttyUSB0
Port16=/dev/ttyUSB1
Port17=ignored
