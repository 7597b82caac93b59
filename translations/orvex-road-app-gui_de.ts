<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>GeneralInfoWidget</name>
    <message>
        <source>Internal time (uptime)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Measure cycle number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 day(s) %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> (%1 c/s)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ImitatorObjectWidget</name>
    <message>
        <source>km/h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no data</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Dunvel Orvex Road App</source>
        <translation>Dunvel Orvex Straßen-App</translation>
    </message>
    <message>
        <source> Traffic scheme  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Road objects  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send commands  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Configure limitations  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set radar position  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fine tuning  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save params and restart  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>General info  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Switch work profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Exit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Protocol</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;0. Serial, type D (SerD)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;1. Serial, type P (SerP)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Force server to change protocol</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Visible &amp;controls</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Traffic &amp;scheme / Speed generated with imitator</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Road &amp;objects</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;General info</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send &amp;commands</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Configure &amp;limitations</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fine &amp;tuning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set &amp;radar position</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save &amp;params and restart</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Paint objects in different colors</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Choose radar server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;About this program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hardware info</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Firmware info</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Speed generated with imitator</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, type 1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, type 2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Radar server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter new server URL</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About this program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch work profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Traffic scheme</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Draw road &amp;vertical</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Keep aspect ratio and object sizes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Draw &amp;current tracks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Draw &amp;average tracks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Normal mode</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Statistical (long exposure) mode</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Mixed mode</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Customize &amp;traffic scheme</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reset average tracks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Traffic scheme customization</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ObjectsTableWidget</name>
    <message>
        <source>id</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>X speed, km/h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Y speed, km/h</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>X range, m</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Y range, m</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Length, m</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Updated</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RadarStateWidget</name>
    <message>
        <source>[Wrong messages. Check selected protocol]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[No messages from radar]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Radar is busy now]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Radar is working]</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RoadConfigWidget</name>
    <message>
        <source>Traffic scheme customization</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Road parts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Append a lane on the left side of the road</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>+</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove the outermost lane on the left side of the road</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>‒</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Width, m</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Append a lane on the right side of the road</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove the outermost lane on the right side of the road</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Road axis *</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Y offset, m</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>* Road axis is a virtual line in the middle of the median strip.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Road sections</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Radius, m</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Length, m **</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Append a section at the end of the road</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove the last section of the road</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>** Sections are measured along the road axis.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Median strip</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Roadside</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Section</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>straight</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>left curve</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>right curve</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Warning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All unsaved data will be lost. Continue?</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RoadObjectsWidget</name>
    <message>
        <source>%1 km/h</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ServerConnectionWidget</name>
    <message>
        <source>[Connecting to %1]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Connected to %1]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[No connection to %1]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Disconnected from %1]</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ServerPingWidget</name>
    <message>
        <source>[Ping timeout: %1 ms]</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ServerProtocolWidget</name>
    <message>
        <source>[SerD]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[SerP]</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ServerStateWidget</name>
    <message>
        <source>[Connecting to RSPS]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Opening %1]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Testing %1]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[%w %1]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Working on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 on</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WorkProfileHandler</name>
    <message>
        <source>Default profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> (copy)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WorkProfileWidget</name>
    <message>
        <source> Saved work profiles  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>+</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>‒</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Edit work profile  </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Warning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All unsaved data will be lost. Continue?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> [current]</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
