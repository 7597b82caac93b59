<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>CollapsibleGroupBox</name>
    <message>
        <source>Click the title to expand</source>
        <translation>Zum Aufklappen auf den Titel klicken</translation>
    </message>
</context>
</TS>
