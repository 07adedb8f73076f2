[Hardware]
Name=Default Profile
Manufacturer=Quorv

[Interface]
BaudRates=50,75,150,300,600,1200,1800,2000,2400,3600,4800,7200,9600,10400,14400,19200,28800,38400,56000,57600,115200,230400,460800,921600
DataBits=5,6,7,8
Parity=N,S,M,E,O
StopBits=1,1.5,2

[Registry]
Port1=
Port2=
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
Port16=
