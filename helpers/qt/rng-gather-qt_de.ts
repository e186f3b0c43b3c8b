<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Dialog</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>A program needs random bytes</source>
        <translation>Ein Programm benötigt Zufallsbytes</translation>
    </message>
    <message>
        <source>Move the mouse around in this window, or press different keys at irregular intervals, until the bar is full. To cancel, press Escape or close the window.</source>
        <translation>Bewegen Sie die Maus in diesem Fenster hin und her, oder drücken Sie verschiedene Tasten in unregelmäßigen Abständen, bis der Balken voll ist. Um abzubrechen, drücken Sie Esc oder schließen Sie das Fenster.</translation>
    </message>
    <message>
        <source>You may be connected over a network, so twice as many keys are needed.</source>
        <translation>Möglicherweise sind Sie über ein Netzwerk verbunden. Deshalb sind doppelt so viele Tastendrücke nötig.</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>%p%</source>
        <translation>%p %</translation>
    </message>
    <message>
        <source>That is enough. Please stop typing.</source>
        <translation>Das genügt. Bitte tippen Sie nicht weiter.</translation>
    </message>
    <message>
        <source>The input is too regular to be random. No random bytes were generated.</source>
        <translation>Die Eingaben sind zu regelmäßig, um zufällig zu sein. Es wurden keine Zufallsbytes erzeugt.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>No random bytes</source>
        <translation>Keine Zufallsbytes</translation>
    </message>
</context>
</TS>
