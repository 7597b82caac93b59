<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>MainWindow</name>
    <message>
        <source>Dunvel Orvex Road App</source>
        <translation>Dunvel Orvex Straßen-App</translation>
    </message>
</context>
</TS>
