<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: MIT -->
<TS version="2.1" language="de_DE" sourcelanguage="en_GB">
  <context>
    <name>QObject</name>
    <message>
      <source>Korval Asap server</source>
      <translation>Korval Asap-Server</translation>
    </message>
    <message>
      <source>FOLDER for Korval to Asap configuration files</source>
      <translation>Ordner der Beschreibungsdateien</translation>
    </message>
    <message>
      <source>Folder for Korval ECU files</source>
      <translation>Ordner der Steuergerätedateien</translation>
    </message>
    <message>
      <source>Properties</source>
      <translation>Eigenschaften</translation>
    </message>
    <message>
      <source>Communication Port Settings</source>
      <translation>Serielle Schnittstelle</translation>
    </message>
    <message>
      <source>Port</source>
      <translation>Port</translation>
    </message>
    <message>
      <source>Open when server start</source>
      <translation>Beim Start des Servers öffnen</translation>
    </message>
    <message>
      <source>Port:</source>
      <translation>Port:</translation>
    </message>
    <message>
      <source>Maximum Speed</source>
      <translation>Geschwindigkeit</translation>
    </message>
    <message>
      <source>Connection Preferences</source>
      <translation>Verbindung</translation>
    </message>
    <message>
      <source>Data Bits</source>
      <translation>Datenbits</translation>
    </message>
    <message>
      <source>Parity</source>
      <translation>Parität</translation>
    </message>
    <message>
      <source>Stop Bits</source>
      <translation>Stoppbits</translation>
    </message>
    <message>
      <source>Data Bits:</source>
      <translation>Datenbits:</translation>
    </message>
    <message>
      <source>Parity:</source>
      <translation>Parität:</translation>
    </message>
    <message>
      <source>Stop Bits:</source>
      <translation>Stoppbits:</translation>
    </message>
    <message>
      <source>&amp;Flow Control</source>
      <translation>&amp;Flusssteuerung</translation>
    </message>
    <message>
      <source>None</source>
      <translation>Keine</translation>
    </message>
    <message>
      <source>Xon/Xoff</source>
      <translation>Xon/Xoff</translation>
    </message>
    <message>
      <source>RTS</source>
      <translation>RTS</translation>
    </message>
    <message>
      <source>Xon/RTS</source>
      <translation>Xon/RTS</translation>
    </message>
    <message>
      <source>TCPIP</source>
      <translation>TCP/IP</translation>
    </message>
    <message>
      <source>TCP port number</source>
      <translation>Nummer des TCP-Ports</translation>
    </message>
    <message>
      <source>1 to 65535</source>
      <translation>1 bis 65535</translation>
    </message>
    <message>
      <source>Port number</source>
      <translation>Portnummer</translation>
    </message>
    <message>
      <source>Listen on</source>
      <translation>Lauscht auf</translation>
    </message>
    <message>
      <source>An IP address of this computer; empty: all of them</source>
      <translation>Eine IP-Adresse dieses Rechners; leer: alle</translation>
    </message>
    <message>
      <source>all addresses</source>
      <translation>allen Adressen</translation>
    </message>
    <message>
      <source>Allowed clients</source>
      <translation>Zugelassene Clients</translation>
    </message>
    <message>
      <source>IP addresses and networks with commas between them, as in 192.168.4.0/24, 127.0.0.1; empty: every client</source>
      <translation>IP-Adressen und Netze, mit Kommas getrennt, etwa 192.168.4.0/24, 127.0.0.1; leer: jeder Client</translation>
    </message>
    <message>
      <source>every client</source>
      <translation>jeder Client</translation>
    </message>
    <message>
      <source>OK</source>
      <translation>OK</translation>
    </message>
    <message>
      <source>Cancel</source>
      <translation>Abbrechen</translation>
    </message>
  </context>
  <context>
    <name>korval::apps::InterfaceMenu</name>
    <message>
      <source>Simulated ECU (SIM)</source>
      <translation>Simuliertes Steuergerät (SIM)</translation>
    </message>
    <message>
      <source>&amp;Diagnostic interface</source>
      <translation>&amp;Diagnoseschnittstelle</translation>
    </message>
    <message>
      <source>%1 (not plugged in)</source>
      <translation>%1 (nicht angesteckt)</translation>
    </message>
    <message>
      <source>&amp;Other port...</source>
      <translation>&amp;Anderer Port...</translation>
    </message>
    <message>
      <source>Diagnostic interface</source>
      <translation>Diagnoseschnittstelle</translation>
    </message>
    <message>
      <source>Port, for example SIM, COM3, /dev/ttyUSB0 or CAN:socketcan:can0:</source>
      <translation>Port, zum Beispiel SIM, COM3, /dev/ttyUSB0 oder CAN:socketcan:can0:</translation>
    </message>
  </context>
  <context>
    <name>korval::apps::MainWindow</name>
    <message>
      <source>Korval Asap server</source>
      <translation>Korval Asap-Server</translation>
    </message>
    <message>
      <source>&amp;Server</source>
      <translation>&amp;Server</translation>
    </message>
    <message>
      <source>&amp;Quit</source>
      <translation>&amp;Beenden</translation>
    </message>
    <message>
      <source>&amp;Help</source>
      <translation>&amp;Hilfe</translation>
    </message>
    <message>
      <source>&amp;About</source>
      <translation>Ü&amp;ber</translation>
    </message>
    <message>
      <source>About</source>
      <translation>Über</translation>
    </message>
    <message>
      <source>&lt;b&gt;Korval Asap server %1&lt;/b&gt;</source>
      <translation>&lt;b&gt;Korval Asap-Server %1&lt;/b&gt;</translation>
    </message>
    <message>
      <source>Answers a test bench's ASAP3 requests over TCP and RS232 and drives vehicle ECUs.</source>
      <translation>Beantwortet ASAP3-Anfragen eines Prüfstands über TCP und RS232 und bedient Fahrzeugsteuergeräte.</translation>
    </message>
  </context>
  <context>
    <name>korval::ui::DriveList</name>
    <message>
      <source>Home (%1)</source>
      <translation>Eigene Dateien (%1)</translation>
    </message>
  </context>
  <context>
    <name>korval::ui::Face</name>
    <message>
      <source>Session</source>
      <translation>Sitzung</translation>
    </message>
    <message>
      <source>Remote system</source>
      <translation>Gegenstelle</translation>
    </message>
    <message>
      <source>Diagnostic interface:</source>
      <translation>Diagnoseschnittstelle:</translation>
    </message>
    <message>
      <source>Open port</source>
      <translation>Port öffnen</translation>
    </message>
    <message>
      <source>Properties...</source>
      <translation>Eigenschaften...</translation>
    </message>
    <message>
      <source>Serial port, TCP port and folders</source>
      <translation>Serielle Schnittstelle, TCP-Port und Ordner</translation>
    </message>
    <message>
      <source>Serial port open; toggles it</source>
      <translation>Serielle Schnittstelle offen; schaltet um</translation>
    </message>
    <message>
      <source>Serial port closed; toggles it</source>
      <translation>Serielle Schnittstelle geschlossen; schaltet um</translation>
    </message>
    <message>
      <source>Selected files</source>
      <translation>Gewählte Dateien</translation>
    </message>
    <message>
      <source>Id</source>
      <translation>Nr.</translation>
    </message>
    <message>
      <source>File</source>
      <translation>Datei</translation>
    </message>
    <message>
      <source>parameters file</source>
      <translation>Parameterdatei</translation>
    </message>
    <message>
      <source>address</source>
      <translation>Adresse</translation>
    </message>
    <message>
      <source>Function</source>
      <translation>Funktion</translation>
    </message>
    <message>
      <source>Protocol</source>
      <translation>Protokoll</translation>
    </message>
    <message>
      <source>Identification</source>
      <translation>Identifikation</translation>
    </message>
    <message>
      <source>Acquired data</source>
      <translation>Erfasste Daten</translation>
    </message>
    <message>
      <source>Data</source>
      <translation>Wert</translation>
    </message>
    <message>
      <source>Ecu</source>
      <translation>Steuergerät</translation>
    </message>
    <message>
      <source>Value</source>
      <translation>Messwert</translation>
    </message>
    <message>
      <source>Korval name</source>
      <translation>Korval-Name</translation>
    </message>
    <message>
      <source>Trace</source>
      <translation>Protokoll</translation>
    </message>
    <message>
      <source>Reset All</source>
      <translation>Alles zurücksetzen</translation>
    </message>
    <message>
      <source>Closes and reopens the ports and ends the session</source>
      <translation>Schließt und öffnet die Ports und beendet die Sitzung</translation>
    </message>
    <message>
      <source>Read data</source>
      <translation>Daten lesen</translation>
    </message>
    <message>
      <source>Reads the acquired data once</source>
      <translation>Liest die erfassten Daten einmal</translation>
    </message>
    <message>
      <source>Read Ecu Ident</source>
      <translation>Identifikation lesen</translation>
    </message>
    <message>
      <source>Reads the identification of every file's ECU</source>
      <translation>Liest die Identifikation des Steuergeräts jeder Datei</translation>
    </message>
    <message>
      <source>Display Get Online value</source>
      <translation>Online-Werte anzeigen</translation>
    </message>
    <message>
      <source>Shows the values that the client reads in the list</source>
      <translation>Zeigt die Werte, die der Client liest, in der Liste</translation>
    </message>
    <message>
      <source>Check &amp;&amp; debug</source>
      <translation>Prüfen &amp;&amp; Fehlersuche</translation>
    </message>
    <message>
      <source>Traces frames, values and errors too</source>
      <translation>Protokolliert auch Telegramme, Werte und Fehler</translation>
    </message>
    <message>
      <source>Close port</source>
      <translation>Port schließen</translation>
    </message>
    <message>
      <source>Closes the serial port</source>
      <translation>Schließt die serielle Schnittstelle</translation>
    </message>
    <message>
      <source>Opens the serial port</source>
      <translation>Öffnet die serielle Schnittstelle</translation>
    </message>
  </context>
  <context>
    <name>korval::ui::FindBar</name>
    <message>
      <source>F&amp;ind:</source>
      <translation>&amp;Suchen:</translation>
    </message>
    <message>
      <source>Previous</source>
      <translation>Zurück</translation>
    </message>
    <message>
      <source>Find previous (Shift+F3)</source>
      <translation>Vorheriges suchen (Umschalt+F3)</translation>
    </message>
    <message>
      <source>Next</source>
      <translation>Weiter</translation>
    </message>
    <message>
      <source>Find next (F3)</source>
      <translation>Nächstes suchen (F3)</translation>
    </message>
    <message>
      <source>Close</source>
      <translation>Schließen</translation>
    </message>
    <message>
      <source>Close the find bar (Esc)</source>
      <translation>Suchleiste schließen (Esc)</translation>
    </message>
    <message>
      <source>Not found</source>
      <translation>Nicht gefunden</translation>
    </message>
  </context>
  <context>
    <name>korval::ui::FolderPicker</name>
    <message>
      <source>%1: drive</source>
      <translation>%1: Laufwerk</translation>
    </message>
    <message>
      <source>%1: folder</source>
      <translation>%1: Ordner</translation>
    </message>
    <message>
      <source>%1: files</source>
      <translation>%1: Dateien</translation>
    </message>
    <message>
      <source>%1: path</source>
      <translation>%1: Pfad</translation>
    </message>
    <message>
      <source>The folder; type another one and press Enter</source>
      <translation>Der Ordner; einen anderen eintippen und mit Eingabe bestätigen</translation>
    </message>
  </context>
  <context>
    <name>korval::ui::PortLabelBox</name>
    <message>
      <source>Diagnostic interface</source>
      <translation>Diagnoseschnittstelle</translation>
    </message>
  </context>
  <context>
    <name>korval::ui::StateImage</name>
    <message>
      <source>Toggles Port</source>
      <translation>Schaltet den Port um</translation>
    </message>
  </context>
  <context>
    <name>korval::ui::StatusPanels</name>
    <message>
      <source>Communications Port Status</source>
      <translation>Zustand der seriellen Schnittstelle</translation>
    </message>
    <message>
      <source>Communications Port Settings</source>
      <translation>Einstellungen der seriellen Schnittstelle</translation>
    </message>
    <message>
      <source>Serial response timer</source>
      <translation>Antwortzeit der seriellen Schnittstelle</translation>
    </message>
    <message>
      <source>Connect Time</source>
      <translation>Verbindungsdauer</translation>
    </message>
  </context>
  <context>
    <name>korval::ui::TerminalBox</name>
    <message>
      <source>Trace</source>
      <translation>Protokoll</translation>
    </message>
    <message>
      <source>&amp;Copy</source>
      <translation>&amp;Kopieren</translation>
    </message>
    <message>
      <source>Select &amp;all</source>
      <translation>&amp;Alles markieren</translation>
    </message>
    <message>
      <source>&amp;Find...</source>
      <translation>&amp;Suchen...</translation>
    </message>
    <message>
      <source>&amp;Save as text...</source>
      <translation>Als &amp;Text speichern...</translation>
    </message>
    <message>
      <source>Save the trace</source>
      <translation>Protokoll speichern</translation>
    </message>
    <message>
      <source>Text files (*.txt);;All files (*)</source>
      <translation>Textdateien (*.txt);;Alle Dateien (*)</translation>
    </message>
    <message>
      <source>The trace could not be saved as %1: %2</source>
      <translation>Das Protokoll konnte nicht als %1 gespeichert werden: %2</translation>
    </message>
  </context>
</TS>
