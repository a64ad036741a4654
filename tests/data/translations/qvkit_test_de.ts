<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Common</name>
    <message>
        <source>action-OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>action-cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>title-reset…</source>
        <translation>Zurücksetzen…</translation>
    </message>
    <message>
        <source>state-unknown</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Errors</name>
    <message>
        <source>error-generic-title</source>
        <translation>Ein Fehler ist aufgetreten.</translation>
    </message>
</context>
<context>
    <name>Status Codes</name>
    <message>
        <source>404</source>
        <translation>Nicht gefunden</translation>
    </message>
    <message>
        <source>http-404</source>
        <translation>Nicht gefunden</translation>
    </message>
</context>
<context>
    <name>Localizable</name>
    <message>
        <source>notice-not-for-release-do-not-distribute</source>
        <translation>NICHT ZUR VERÖFFENTLICHUNG.</translation>
    </message>
</context>
</TS>
