[Hardware]
Name=Y-Kabel, 2 Ports
Manufacturer=Eigenbau

[Interface]
BaudRates=1200,9600,115200
DataBits=7,8
Parity=N,E,O
StopBits=1,1.5,2

[Registry]
Port1=/dev/ttyUSB0
Port2=/dev/ttyUSB1
Port3=
Port4=
Port5=
Port6=
Port7=
Port8=
Port9=
Port10=
Port11=
Port12=
Port13=
Port14=
Port15=
Port16=/dev/serial/by-id/usb-x port
