<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>CmdStateLabel</name>
    <message>
        <source>queued</source>
        <translation>eingereiht</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>in Arbeit</translation>
    </message>
    <message>
        <source>command received</source>
        <translation>Befehl empfangen</translation>
    </message>
    <message>
        <source>error occurred</source>
        <translation>Fehler aufgetreten</translation>
    </message>
</context>
<context>
    <name>GeneralInfoWidget</name>
    <message>
        <source>Internal time (uptime)</source>
        <translation>Interne Zeit (Betriebszeit)</translation>
    </message>
    <message>
        <source>Measure cycle number</source>
        <translation>Messzyklusnummer</translation>
    </message>
    <message>
        <source>%1 day(s) %2</source>
        <translation>%1 Tag(e) %2</translation>
    </message>
    <message>
        <source> (%1 c/s)</source>
        <translation> (%1 Zyklen/s)</translation>
    </message>
</context>
<context>
    <name>HistoryTableWidget</name>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Clear history</source>
        <translation>Verlauf leeren</translation>
    </message>
    <message>
        <source>Save to file</source>
        <translation>In Datei speichern</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Fortsetzen</translation>
    </message>
</context>
<context>
    <name>ImitatorObjectWidget</name>
    <message>
        <source>km/h</source>
        <translation>km/h</translation>
    </message>
    <message>
        <source>no data</source>
        <translation>keine Daten</translation>
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
        <translation> Verkehrsschema  </translation>
    </message>
    <message>
        <source> Road objects  </source>
        <translation> Straßenobjekte  </translation>
    </message>
    <message>
        <source>Send commands  </source>
        <translation>Befehle senden  </translation>
    </message>
    <message>
        <source>Configure limitations  </source>
        <translation>Begrenzungen konfigurieren  </translation>
    </message>
    <message>
        <source>Set radar position  </source>
        <translation>Radarposition festlegen  </translation>
    </message>
    <message>
        <source>Fine tuning  </source>
        <translation>Feinabstimmung  </translation>
    </message>
    <message>
        <source>Save params and restart  </source>
        <translation>Parameter speichern und neu starten  </translation>
    </message>
    <message>
        <source>General info  </source>
        <translation>Allgemeine Informationen  </translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Switch work profile</source>
        <translation>&amp;Arbeitsprofil wechseln</translation>
    </message>
    <message>
        <source>&amp;Exit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Protocol</source>
        <translation>&amp;Protokoll</translation>
    </message>
    <message>
        <source>&amp;0. Serial, type D (SerD)</source>
        <translation>&amp;0. Seriell, Typ D (SerD)</translation>
    </message>
    <message>
        <source>&amp;1. Serial, type P (SerP)</source>
        <translation>&amp;1. Seriell, Typ P (SerP)</translation>
    </message>
    <message>
        <source>&amp;Force server to change protocol</source>
        <translation>Protokollwechsel am Server &amp;erzwingen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>Visible &amp;controls</source>
        <translation>Sichtbare &amp;Bedienelemente</translation>
    </message>
    <message>
        <source>Traffic &amp;scheme / Speed generated with imitator</source>
        <translation>Verkehrs&amp;schema / Vom Imitator erzeugte Geschwindigkeit</translation>
    </message>
    <message>
        <source>Road &amp;objects</source>
        <translation>Straßen&amp;objekte</translation>
    </message>
    <message>
        <source>&amp;General info</source>
        <translation>&amp;Allgemeine Informationen</translation>
    </message>
    <message>
        <source>Send &amp;commands</source>
        <translation>&amp;Befehle senden</translation>
    </message>
    <message>
        <source>Configure &amp;limitations</source>
        <translation>Be&amp;grenzungen konfigurieren</translation>
    </message>
    <message>
        <source>Fine &amp;tuning</source>
        <translation>&amp;Feinabstimmung</translation>
    </message>
    <message>
        <source>Set &amp;radar position</source>
        <translation>&amp;Radarposition festlegen</translation>
    </message>
    <message>
        <source>Save &amp;params and restart</source>
        <translation>&amp;Parameter speichern und neu starten</translation>
    </message>
    <message>
        <source>&amp;Paint objects in different colors</source>
        <translation>Objekte in verschiedenen &amp;Farben darstellen</translation>
    </message>
    <message>
        <source>&amp;Server</source>
        <translation>&amp;Server</translation>
    </message>
    <message>
        <source>&amp;Choose radar server</source>
        <translation>&amp;Radarserver auswählen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About this program</source>
        <translation>&amp;Über dieses Programm</translation>
    </message>
    <message>
        <source>Hardware info</source>
        <translation>Hardware-Informationen</translation>
    </message>
    <message>
        <source>Firmware info</source>
        <translation>Firmware-Informationen</translation>
    </message>
    <message>
        <source> Speed generated with imitator</source>
        <translation> Vom Imitator erzeugte Geschwindigkeit</translation>
    </message>
    <message>
        <source>, type 1</source>
        <translation>, Typ 1</translation>
    </message>
    <message>
        <source>, type 2</source>
        <translation>, Typ 2</translation>
    </message>
    <message>
        <source>Radar server</source>
        <translation>Radarserver</translation>
    </message>
    <message>
        <source>Enter new server URL</source>
        <translation>Neue Server-URL eingeben</translation>
    </message>
    <message>
        <source>About this program</source>
        <translation>Über dieses Programm</translation>
    </message>
    <message>
        <source>Switch work profile</source>
        <translation>Arbeitsprofil wechseln</translation>
    </message>
    <message>
        <source>&amp;Traffic scheme</source>
        <translation>&amp;Verkehrsschema</translation>
    </message>
    <message>
        <source>Draw road &amp;vertical</source>
        <translation>Straße &amp;vertikal darstellen</translation>
    </message>
    <message>
        <source>&amp;Keep aspect ratio and object sizes</source>
        <translation>Seitenverhältnis und Objektgrößen &amp;beibehalten</translation>
    </message>
    <message>
        <source>Draw &amp;current tracks</source>
        <translation>&amp;Aktuelle Tracks anzeigen</translation>
    </message>
    <message>
        <source>Draw &amp;average tracks</source>
        <translation>&amp;Gemittelte Tracks anzeigen</translation>
    </message>
    <message>
        <source>&amp;Normal mode</source>
        <translation>&amp;Normalmodus</translation>
    </message>
    <message>
        <source>&amp;Statistical (long exposure) mode</source>
        <translation>&amp;Statistikmodus (Langzeitbelichtung)</translation>
    </message>
    <message>
        <source>&amp;Mixed mode</source>
        <translation>&amp;Mischmodus</translation>
    </message>
    <message>
        <source>Customize &amp;traffic scheme</source>
        <translation>Verkehrsschema an&amp;passen</translation>
    </message>
    <message>
        <source>&amp;Data</source>
        <translation>Da&amp;ten</translation>
    </message>
    <message>
        <source>&amp;Reset average tracks</source>
        <translation>Gemittelte Tracks &amp;zurücksetzen</translation>
    </message>
    <message>
        <source>Traffic scheme customization</source>
        <translation>Anpassung des Verkehrsschemas</translation>
    </message>
    <message>
        <source>Objects &amp;history</source>
        <translation>Objekt&amp;verlauf</translation>
    </message>
    <message>
        <source>&amp;Automatically get data when radar starts working</source>
        <translation>&amp;Automatisch Daten lesen, sobald das Radar arbeitet</translation>
    </message>
    <message>
        <source>Objects history</source>
        <translation>Objektverlauf</translation>
    </message>
    <message>
        <source>Projecting to &amp;video</source>
        <translation>Projektion auf das &amp;Video</translation>
    </message>
    <message>
        <source>Draw camera&apos;s sight &amp;line and area</source>
        <translation>Sicht&amp;linie und Sichtbereich der Kamera anzeigen</translation>
    </message>
    <message>
        <source>Projecting to video</source>
        <translation>Projektion auf das Video</translation>
    </message>
    <message>
        <source>Draw &amp;lane boundaries</source>
        <translation>&amp;Fahrstreifengrenzen anzeigen</translation>
    </message>
    <message>
        <source>Draw &amp;distance lines</source>
        <translation>&amp;Entfernungslinien anzeigen</translation>
    </message>
    <message>
        <source>Customize &amp;projecting to video</source>
        <translation>&amp;Projektion auf das Video anpassen</translation>
    </message>
    <message>
        <source>&amp;Pick up parameters</source>
        <translation>Parameter &amp;ermitteln</translation>
    </message>
    <message>
        <source>Radar &amp;position</source>
        <translation>Radar&amp;position</translation>
    </message>
    <message>
        <source>Radar position and camera view &amp;angle</source>
        <translation>Radarposition und Kamera&amp;blickwinkel</translation>
    </message>
    <message>
        <source>Projecting to video customization</source>
        <translation>Anpassung der Projektion auf das Video</translation>
    </message>
</context>
<context>
    <name>ObjectsTableWidget</name>
    <message>
        <source>id</source>
        <translation>ID</translation>
    </message>
    <message>
        <source>X speed, km/h</source>
        <translation>vX, km/h</translation>
    </message>
    <message>
        <source>Y speed, km/h</source>
        <translation>vY, km/h</translation>
    </message>
    <message>
        <source>X range, m</source>
        <translation>X, m</translation>
    </message>
    <message>
        <source>Y range, m</source>
        <translation>Y, m</translation>
    </message>
    <message>
        <source>Length, m</source>
        <translation>Länge, m</translation>
    </message>
    <message>
        <source>Updated</source>
        <translation>Zeit</translation>
    </message>
</context>
<context>
    <name>ParStateLabel</name>
    <message>
        <source>value changed</source>
        <translation>Wert geändert</translation>
    </message>
    <message>
        <source>queued</source>
        <translation>eingereiht</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>in Arbeit</translation>
    </message>
    <message>
        <source>command received</source>
        <translation>Befehl empfangen</translation>
    </message>
    <message>
        <source>waiting for data</source>
        <translation>warte auf Daten</translation>
    </message>
    <message>
        <source>received from radar</source>
        <translation>vom Radar empfangen</translation>
    </message>
    <message>
        <source>error occurred</source>
        <translation>Fehler aufgetreten</translation>
    </message>
</context>
<context>
    <name>PickupFit</name>
    <message>
        <source>Checkpoint #%1: entered Y %2 m, picked Y %3 m, difference %4 m</source>
        <translation>Kontrollpunkt #%1: eingegebenes Y %2 m, ermitteltes Y %3 m, Abweichung %4 m</translation>
    </message>
    <message>
        <source>Checkpoint #%1: entered Y %2 m, not on the road under the picked position</source>
        <translation>Kontrollpunkt #%1: eingegebenes Y %2 m, liegt bei der ermittelten Position nicht auf der Straße</translation>
    </message>
    <message>
        <source>Line segment: entered length %1 m, fitted length %2 m, difference %3 m</source>
        <translation>Strecke: eingegebene Länge %1 m, ermittelte Länge %2 m, Abweichung %3 m</translation>
    </message>
    <message>
        <source>Line segment: entered length %1 m, not on the road under the picked position</source>
        <translation>Strecke: eingegebene Länge %1 m, liegt bei der ermittelten Position nicht auf der Straße</translation>
    </message>
    <message>
        <source>Root-mean-square error: %1 m</source>
        <translation>Mittlerer quadratischer Fehler: %1 m</translation>
    </message>
</context>
<context>
    <name>PresetButton</name>
    <message>
        <source>&amp;Rename preset</source>
        <translation>Voreinstellung &amp;umbenennen</translation>
    </message>
    <message>
        <source>&amp;Update preset with current values</source>
        <translation>Voreinstellung mit aktuellen Werten &amp;aktualisieren</translation>
    </message>
    <message>
        <source>&amp;Delete preset</source>
        <translation>Voreinstellung &amp;löschen</translation>
    </message>
</context>
<context>
    <name>PresetedWidget</name>
    <message>
        <source>Default preset</source>
        <translation>Standardvoreinstellung</translation>
    </message>
    <message>
        <source>New preset</source>
        <translation>Neue Voreinstellung</translation>
    </message>
    <message>
        <source>Preset name</source>
        <translation>Name der Voreinstellung</translation>
    </message>
    <message>
        <source>Enter new preset name</source>
        <translation>Neuen Namen der Voreinstellung eingeben</translation>
    </message>
</context>
<context>
    <name>ProjectionPainter</name>
    <message>
        <source>%1 km/h</source>
        <translation>%1 km/h</translation>
    </message>
</context>
<context>
    <name>ProjectionPickup</name>
    <message>
        <source>radar position, camera view angle is known</source>
        <translation>Radarposition, Kamerablickwinkel ist bekannt</translation>
    </message>
    <message>
        <source>radar position and camera view angle</source>
        <translation>Radarposition und Kamerablickwinkel</translation>
    </message>
    <message>
        <source>Then mark additional line segment along the X axis.</source>
        <translation>Danach zusätzlich eine Strecke entlang der X-Achse markieren.</translation>
    </message>
    <message>
        <source>Picking up parameters</source>
        <translation>Parameter ermitteln</translation>
    </message>
    <message>
        <source>Selected mode: picking up</source>
        <translation>Gewählter Modus: Ermittlung von</translation>
    </message>
    <message>
        <source>Mark four checkpoints on the projection as far apart as possible.</source>
        <translation>Vier Kontrollpunkte möglichst weit voneinander entfernt auf der Projektion markieren.</translation>
    </message>
    <message>
        <source>Mark checkpoint #%1</source>
        <translation>Kontrollpunkt #%1 markieren</translation>
    </message>
    <message>
        <source>Mark line segment along the X axis</source>
        <translation>Strecke entlang der X-Achse markieren</translation>
    </message>
    <message>
        <source>Checkpoint position</source>
        <translation>Position des Kontrollpunkts</translation>
    </message>
    <message>
        <source>Enter Y coordinate of the checkpoint #%1, m</source>
        <translation>Y-Koordinate des Kontrollpunkts #%1 eingeben, m</translation>
    </message>
    <message>
        <source>Line segment length</source>
        <translation>Länge der Strecke</translation>
    </message>
    <message>
        <source>Enter line segment length, m</source>
        <translation>Länge der Strecke eingeben, m</translation>
    </message>
    <message>
        <source>Picked parameters</source>
        <translation>Ermittelte Parameter</translation>
    </message>
    <message>
        <source>Unable to pick up parameters.</source>
        <translation>Die Parameter konnten nicht ermittelt werden.</translation>
    </message>
    <message>
        <source>Camera horizontal view angle is %1 deg.</source>
        <translation>Der horizontale Blickwinkel der Kamera beträgt %1°.</translation>
    </message>
    <message>
        <source>Picked radar position is written into the &apos;Set radar position&apos; control.</source>
        <translation>Die ermittelte Radarposition wurde in das Element „Radarposition festlegen“ eingetragen.</translation>
    </message>
</context>
<context>
    <name>ProjectionWidget</name>
    <message>
        <source>Projecting to video</source>
        <translation>Projektion auf das Video</translation>
    </message>
    <message>
        <source>(%1; %2)</source>
        <translation>(%1; %2)</translation>
    </message>
</context>
<context>
    <name>RadarStateWidget</name>
    <message>
        <source>[Wrong messages. Check selected protocol]</source>
        <translation>[Ungültige Nachrichten. Gewähltes Protokoll prüfen]</translation>
    </message>
    <message>
        <source>[No messages from radar]</source>
        <translation>[Keine Nachrichten vom Radar]</translation>
    </message>
    <message>
        <source>[Radar is busy now]</source>
        <translation>[Radar ist beschäftigt]</translation>
    </message>
    <message>
        <source>[Radar is working]</source>
        <translation>[Radar in Betrieb]</translation>
    </message>
</context>
<context>
    <name>RadarTuningWidget</name>
    <message>
        <source>Frequency index</source>
        <translation>Frequenzindex</translation>
    </message>
    <message>
        <source>Sensitivity threshold</source>
        <translation>Empfindlichkeitsschwelle</translation>
    </message>
    <message>
        <source>Get from radar</source>
        <translation>Vom Radar lesen</translation>
    </message>
    <message>
        <source>Set to radar</source>
        <translation>An Radar senden</translation>
    </message>
</context>
<context>
    <name>ReadBackMark</name>
    <message>
        <source>The radar reports %1, outside the range %2 to %3</source>
        <translation>Das Radar meldet %1, außerhalb des Bereichs %2 bis %3</translation>
    </message>
</context>
<context>
    <name>RoadConfigWidget</name>
    <message>
        <source>Traffic scheme customization</source>
        <translation>Anpassung des Verkehrsschemas</translation>
    </message>
    <message>
        <source> Road parts</source>
        <translation> Straßenteile</translation>
    </message>
    <message>
        <source>Append a lane on the left side of the road</source>
        <translation>Fahrstreifen auf der linken Straßenseite hinzufügen</translation>
    </message>
    <message>
        <source>+</source>
        <translation>+</translation>
    </message>
    <message>
        <source>Remove the outermost lane on the left side of the road</source>
        <translation>Äußersten Fahrstreifen auf der linken Straßenseite entfernen</translation>
    </message>
    <message>
        <source>‒</source>
        <translation>‒</translation>
    </message>
    <message>
        <source>Width, m</source>
        <translation>Breite, m</translation>
    </message>
    <message>
        <source>Append a lane on the right side of the road</source>
        <translation>Fahrstreifen auf der rechten Straßenseite hinzufügen</translation>
    </message>
    <message>
        <source>Remove the outermost lane on the right side of the road</source>
        <translation>Äußersten Fahrstreifen auf der rechten Straßenseite entfernen</translation>
    </message>
    <message>
        <source> Road axis *</source>
        <translation> Straßenachse *</translation>
    </message>
    <message>
        <source>Y offset, m</source>
        <translation>Y-Versatz, m</translation>
    </message>
    <message>
        <source>* Road axis is a virtual line in the middle of the median strip.</source>
        <translation>* Die Straßenachse ist eine gedachte Linie in der Mitte des Mittelstreifens.</translation>
    </message>
    <message>
        <source> Road sections</source>
        <translation> Straßenabschnitte</translation>
    </message>
    <message>
        <source>Radius, m</source>
        <translation>Radius, m</translation>
    </message>
    <message>
        <source>Length, m **</source>
        <translation>Länge, m **</translation>
    </message>
    <message>
        <source>Append a section at the end of the road</source>
        <translation>Abschnitt am Ende der Straße hinzufügen</translation>
    </message>
    <message>
        <source>Remove the last section of the road</source>
        <translation>Letzten Abschnitt der Straße entfernen</translation>
    </message>
    <message>
        <source>** Sections are measured along the road axis.</source>
        <translation>** Abschnitte werden entlang der Straßenachse gemessen.</translation>
    </message>
    <message>
        <source>Median strip</source>
        <translation>Mittelstreifen</translation>
    </message>
    <message>
        <source>Lane</source>
        <translation>Fahrstreifen</translation>
    </message>
    <message>
        <source>Roadside</source>
        <translation>Straßenrand</translation>
    </message>
    <message>
        <source>Section</source>
        <translation>Abschnitt</translation>
    </message>
    <message>
        <source>straight</source>
        <translation>gerade</translation>
    </message>
    <message>
        <source>left curve</source>
        <translation>Linkskurve</translation>
    </message>
    <message>
        <source>right curve</source>
        <translation>Rechtskurve</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>All unsaved data will be lost. Continue?</source>
        <translation>Alle ungespeicherten Daten gehen verloren. Fortfahren?</translation>
    </message>
</context>
<context>
    <name>SaveAndRestartWidget</name>
    <message>
        <source>Save params to flash and restart radar</source>
        <translation>Im Flash speichern und Radar neu starten</translation>
    </message>
    <message>
        <source>Restart radar without saving params</source>
        <translation>Radar ohne Speichern neu starten</translation>
    </message>
</context>
<context>
    <name>SchemeObjectsLayer</name>
    <message>
        <source>%1 km/h</source>
        <translation>%1 km/h</translation>
    </message>
</context>
<context>
    <name>SelfDiagnosticsMessageBox</name>
    <message>
        <source>AMP1</source>
        <translation>AMP1</translation>
    </message>
    <message>
        <source>AMP2</source>
        <translation>AMP2</translation>
    </message>
    <message>
        <source>PADC</source>
        <translation>PADC</translation>
    </message>
    <message>
        <source>TRSC</source>
        <translation>TRSC</translation>
    </message>
    <message>
        <source>PLLC</source>
        <translation>PLLC</translation>
    </message>
    <message>
        <source>Self-diagnosis completed.</source>
        <translation>Selbstdiagnose abgeschlossen.</translation>
    </message>
    <message>
        <source>Radar is functioning</source>
        <translation>Das Radar arbeitet</translation>
    </message>
    <message>
        <source>normally</source>
        <translation>normal</translation>
    </message>
    <message>
        <source>wrong</source>
        <translation>fehlerhaft</translation>
    </message>
    <message>
        <source>ok</source>
        <translation>ok</translation>
    </message>
    <message>
        <source>bad</source>
        <translation>defekt</translation>
    </message>
    <message>
        <source>Radar self-diagnosis</source>
        <translation>Selbstdiagnose des Radars</translation>
    </message>
</context>
<context>
    <name>SendCommandsWidget</name>
    <message>
        <source>Get device info</source>
        <translation>Geräteinfo abfragen</translation>
    </message>
    <message>
        <source>Run self-diagnosis</source>
        <translation>Selbstdiagnose starten</translation>
    </message>
    <message>
        <source>Go to &apos;verification&apos; mode</source>
        <translation>Zu &apos;Prüfung&apos; wechseln</translation>
    </message>
    <message>
        <source>Go to &apos;demo objects&apos; mode</source>
        <translation>Zu &apos;Demo-Objekte&apos; wechseln</translation>
    </message>
    <message>
        <source>Hardware info</source>
        <translation>Hardware-Informationen</translation>
    </message>
    <message>
        <source>Firmware info</source>
        <translation>Firmware-Informationen</translation>
    </message>
    <message>
        <source>Imitator, type 1</source>
        <translation>Imitator, Typ 1</translation>
    </message>
    <message>
        <source>Imitator, type 2</source>
        <translation>Imitator, Typ 2</translation>
    </message>
    <message>
        <source>Choose info type</source>
        <translation>Info-Art wählen</translation>
    </message>
    <message>
        <source>Choose imitator type</source>
        <translation>Imitatortyp wählen</translation>
    </message>
    <message>
        <source>Go to &apos;regular&apos; mode</source>
        <translation>Zu &apos;Normalbetrieb&apos; wechseln</translation>
    </message>
    <message>
        <source>Go to &apos;real objects&apos; mode</source>
        <translation>Zu &apos;Echte Objekte&apos; wechseln</translation>
    </message>
</context>
<context>
    <name>ServerConnectionWidget</name>
    <message>
        <source>[Connecting to %1]</source>
        <translation>[Verbindung mit %1 wird hergestellt]</translation>
    </message>
    <message>
        <source>[Connected to %1]</source>
        <translation>[Verbunden mit %1]</translation>
    </message>
    <message>
        <source>[No connection to %1]</source>
        <translation>[Keine Verbindung mit %1]</translation>
    </message>
    <message>
        <source>[Disconnected from %1]</source>
        <translation>[Getrennt von %1]</translation>
    </message>
</context>
<context>
    <name>ServerPingWidget</name>
    <message>
        <source>[Ping timeout: %1 ms]</source>
        <translation>[Ping-Timeout: %1 ms]</translation>
    </message>
</context>
<context>
    <name>ServerProtocolWidget</name>
    <message>
        <source>[SerD]</source>
        <translation>[SerD]</translation>
    </message>
    <message>
        <source>[SerP]</source>
        <translation>[SerP]</translation>
    </message>
</context>
<context>
    <name>ServerStateWidget</name>
    <message>
        <source>[Connecting to RSPS]</source>
        <translation>[Verbindung mit RSPS wird hergestellt]</translation>
    </message>
    <message>
        <source>[Opening %1]</source>
        <translation>[%1 wird geöffnet]</translation>
    </message>
    <message>
        <source>[Testing %1]</source>
        <translation>[%1 wird getestet]</translation>
    </message>
    <message>
        <source>[%w %1]</source>
        <translation>[%w %1]</translation>
    </message>
    <message>
        <source>Working on</source>
        <translation>Aktiv an</translation>
    </message>
    <message>
        <source>%1 on</source>
        <translation>%1 an</translation>
    </message>
</context>
<context>
    <name>SetPolygonWidget</name>
    <message>
        <source>Xmin speed, m/s</source>
        <translation>Xmin-Geschwindigkeit, m/s</translation>
    </message>
    <message>
        <source>Xmax speed, m/s</source>
        <translation>Xmax-Geschwindigkeit, m/s</translation>
    </message>
    <message>
        <source>Ymin speed, m/s</source>
        <translation>Ymin-Geschwindigkeit, m/s</translation>
    </message>
    <message>
        <source>Ymax speed, m/s</source>
        <translation>Ymax-Geschwindigkeit, m/s</translation>
    </message>
    <message>
        <source>Vertex count</source>
        <translation>Anzahl der Eckpunkte</translation>
    </message>
    <message>
        <source>Xmin position, m</source>
        <translation>Xmin-Position, m</translation>
    </message>
    <message>
        <source>Xmax position, m</source>
        <translation>Xmax-Position, m</translation>
    </message>
    <message>
        <source>Ymin position, m</source>
        <translation>Ymin-Position, m</translation>
    </message>
    <message>
        <source>Ymax position, m</source>
        <translation>Ymax-Position, m</translation>
    </message>
    <message>
        <source>Apply vertices</source>
        <translation>Eckpunkte übernehmen</translation>
    </message>
    <message>
        <source>Get from radar</source>
        <translation>Vom Radar lesen</translation>
    </message>
    <message>
        <source>Set to radar</source>
        <translation>An Radar senden</translation>
    </message>
    <message>
        <source>Enable limitations</source>
        <translation>Begrenzungen einschalten</translation>
    </message>
    <message>
        <source>+</source>
        <translation>+</translation>
    </message>
    <message>
        <source>Disable limitations</source>
        <translation>Begrenzungen ausschalten</translation>
    </message>
</context>
<context>
    <name>SetPositionWidget</name>
    <message>
        <source>Height, m</source>
        <translation>Höhe, m</translation>
    </message>
    <message>
        <source>X offset, m</source>
        <translation>X-Versatz, m</translation>
    </message>
    <message>
        <source>Y offset, m</source>
        <translation>Y-Versatz, m</translation>
    </message>
    <message>
        <source>Azimuth, °</source>
        <translation>Azimut, °</translation>
    </message>
    <message>
        <source>Elevation, °</source>
        <translation>Neigung, °</translation>
    </message>
    <message>
        <source>Roll, °</source>
        <translation>Rollwinkel, °</translation>
    </message>
    <message>
        <source>Get from radar</source>
        <translation>Vom Radar lesen</translation>
    </message>
    <message>
        <source>Set to radar</source>
        <translation>An Radar senden</translation>
    </message>
    <message>
        <source>+</source>
        <translation>+</translation>
    </message>
</context>
<context>
    <name>TvmsConfigWidget</name>
    <message>
        <source>Projecting to video customization</source>
        <translation>Anpassung der Projektion auf das Video</translation>
    </message>
    <message>
        <source> Camera position *  </source>
        <translation> Kameraposition *  </translation>
    </message>
    <message>
        <source>X offset, m</source>
        <translation>X-Versatz, m</translation>
    </message>
    <message>
        <source>Y offset, m</source>
        <translation>Y-Versatz, m</translation>
    </message>
    <message>
        <source>Z offset, m</source>
        <translation>Z-Versatz, m</translation>
    </message>
    <message>
        <source>Azimuth misalignment, °</source>
        <translation>Azimutabweichung, °</translation>
    </message>
    <message>
        <source>Altitude misalignment, °</source>
        <translation>Neigungsabweichung, °</translation>
    </message>
    <message>
        <source>* relative to radar</source>
        <translation>* relativ zum Radar</translation>
    </message>
    <message>
        <source> Camera optics  </source>
        <translation> Kameraoptik  </translation>
    </message>
    <message>
        <source>Horizontal view angle, °</source>
        <translation>Horizontaler Blickwinkel, °</translation>
    </message>
    <message>
        <source> Camera video  </source>
        <translation> Kameravideo  </translation>
    </message>
    <message>
        <source>Delay, ms</source>
        <translation>Verzögerung, ms</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>All unsaved data will be lost. Continue?</source>
        <translation>Alle ungespeicherten Daten gehen verloren. Fortfahren?</translation>
    </message>
</context>
<context>
    <name>WorkProfileHandler</name>
    <message>
        <source>Default profile</source>
        <translation>Standardprofil</translation>
    </message>
    <message>
        <source> (copy)</source>
        <translation> (Kopie)</translation>
    </message>
</context>
<context>
    <name>WorkProfileWidget</name>
    <message>
        <source> Saved work profiles  </source>
        <translation> Gespeicherte Arbeitsprofile  </translation>
    </message>
    <message>
        <source>+</source>
        <translation>+</translation>
    </message>
    <message>
        <source>‒</source>
        <translation>‒</translation>
    </message>
    <message>
        <source> Edit work profile  </source>
        <translation> Arbeitsprofil bearbeiten  </translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>All unsaved data will be lost. Continue?</source>
        <translation>Alle ungespeicherten Daten gehen verloren. Fortfahren?</translation>
    </message>
    <message>
        <source> [current]</source>
        <translation> [aktuell]</translation>
    </message>
</context>
</TS>
