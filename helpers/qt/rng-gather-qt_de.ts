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
        <source>Random bytes are needed</source>
        <translation>Zufallsbytes werden gebraucht</translation>
    </message>
    <message>
        <source>Move the mouse in this window, or type any keys without a rhythm, until the bar is full. Escape cancels.</source>
        <translation>Bewegen Sie die Maus in diesem Fenster oder tippen Sie beliebige Tasten ohne festen Takt, bis der Balken voll ist. Esc bricht ab.</translation>
    </message>
    <message>
        <source>This display is reached over a network, so it takes twice as many keys as usual.</source>
        <translation>Diese Anzeige wird über ein Netzwerk erreicht, daher sind doppelt so viele Tasten nötig wie sonst.</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>%p %</source>
        <translation>%p %</translation>
    </message>
    <message>
        <source>Enough, thank you. Please stop typing.</source>
        <translation>Das genügt, vielen Dank. Bitte tippen Sie nicht weiter.</translation>
    </message>
    <message>
        <source>The events are too much alike to be random. Nothing was drawn.</source>
        <translation>Die Eingaben sind einander zu ähnlich, um zufällig zu sein. Es wurden keine Zufallsbytes erzeugt.</translation>
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
