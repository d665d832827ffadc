<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AboutView</name>
    <message>
        <source>About Quorbel</source>
        <translation>Über Quorbel</translation>
    </message>
    <message>
        <source>Version and limited warranty</source>
        <translation>Version und eingeschränkte Gewährleistung</translation>
    </message>
    <message>
        <source>Legal warning</source>
        <translation>Rechtlicher Hinweis</translation>
    </message>
    <message>
        <source>Quorbel on the web</source>
        <translation>Quorbel im Web</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>ActionCommandEmail</name>
    <message>
        <source>E-mail recipients</source>
        <translation>E-Mail-Empfänger</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
</context>
<context>
    <name>ActionCommandEvent</name>
    <message>
        <source>Event</source>
        <translation>Ereignis</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>The severity of the new event</source>
        <translation>Der Schweregrad des neuen Ereignisses</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>The message of the new event. $date, $priority, $host and $message stand for the event that arrived.</source>
        <translation>Die Meldung des neuen Ereignisses. $date, $priority, $host und $message stehen für das eingetroffene Ereignis.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Event to set</source>
        <translation>Zu setzendes Ereignis</translation>
    </message>
</context>
<context>
    <name>ActionCommandRun</name>
    <message>
        <source>Command</source>
        <translation>Befehl</translation>
    </message>
    <message>
        <source>The full path of the program</source>
        <translation>Der vollständige Pfad des Programms</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>Durchsuchen...</translation>
    </message>
    <message>
        <source>Browse for the command</source>
        <translation>Befehl auswählen</translation>
    </message>
    <message>
        <source>Arguments</source>
        <translation>Argumente</translation>
    </message>
    <message>
        <source>Separated by spaces; quote those that contain spaces</source>
        <translation>Durch Leerzeichen getrennt; Argumente mit Leerzeichen in Anführungszeichen</translation>
    </message>
    <message>
        <source>Separated as in a shell, with quotes where needed; but no shell runs the command.</source>
        <translation>Getrennt wie in einer Shell, nötigenfalls mit Anführungszeichen; der Befehl läuft aber ohne Shell.</translation>
    </message>
    <message>
        <source>Environment</source>
        <translation>Umgebung</translation>
    </message>
    <message>
        <source>One NAME=value per line. The event is passed on as QUORBEL_DATE, QUORBEL_PRIORITY, QUORBEL_HOST and QUORBEL_MESSAGE.</source>
        <translation>Je Zeile ein NAME=Wert. Das Ereignis wird als QUORBEL_DATE, QUORBEL_PRIORITY, QUORBEL_HOST und QUORBEL_MESSAGE übergeben.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Command to run</source>
        <translation>Auszuführender Befehl</translation>
    </message>
</context>
<context>
    <name>ActionView</name>
    <message>
        <source>Action</source>
        <translation>Aktion</translation>
    </message>
    <message>
        <source>When an event matches</source>
        <translation>Wenn ein Ereignis zutrifft</translation>
    </message>
    <message>
        <source>Do this</source>
        <translation>Dann</translation>
    </message>
    <message>
        <source>Run a command</source>
        <translation>Befehl ausführen</translation>
    </message>
    <message>
        <source>Command...</source>
        <translation>Befehl...</translation>
    </message>
    <message>
        <source>Run a command: Command</source>
        <translation>Befehl ausführen: Befehl</translation>
    </message>
    <message>
        <source>Choose the command, its arguments and its environment</source>
        <translation>Den Befehl, seine Argumente und seine Umgebung festlegen</translation>
    </message>
    <message>
        <source>Send an e-mail</source>
        <translation>E-Mail senden</translation>
    </message>
    <message>
        <source>Recipients...</source>
        <translation>Empfänger...</translation>
    </message>
    <message>
        <source>Send an e-mail: Recipients</source>
        <translation>E-Mail senden: Empfänger</translation>
    </message>
    <message>
        <source>Choose who gets the e-mail</source>
        <translation>Festlegen, wer die E-Mail bekommt</translation>
    </message>
    <message>
        <source>Set an event</source>
        <translation>Ereignis setzen</translation>
    </message>
    <message>
        <source>Event...</source>
        <translation>Ereignis...</translation>
    </message>
    <message>
        <source>Set an event: Event</source>
        <translation>Ereignis setzen: Ereignis</translation>
    </message>
    <message>
        <source>Choose the type and the text of the event</source>
        <translation>Art und Text des Ereignisses festlegen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
</context>
<context>
    <name>ActionsEmailFormat</name>
    <message>
        <source>E-mail format</source>
        <translation>E-Mail-Format</translation>
    </message>
    <message>
        <source>Send a subject</source>
        <translation>Betreff senden</translation>
    </message>
    <message>
        <source>Subject</source>
        <translation>Betreff</translation>
    </message>
    <message>
        <source>Send a body</source>
        <translation>Text senden</translation>
    </message>
    <message>
        <source>Body</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>$date, $priority, $host and $message stand for the event.</source>
        <translation>$date, $priority, $host und $message stehen für das Ereignis.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
</context>
<context>
    <name>ActionsEmailServer</name>
    <message>
        <source>Mail server</source>
        <translation>Mailserver</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>The name or address of the mail server</source>
        <translation>Name oder Adresse des Mailservers</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Port</translation>
    </message>
    <message>
        <source>Usually 25; 465 with SSL/TLS, 587 with STARTTLS</source>
        <translation>Meist 25; 465 bei SSL/TLS, 587 bei STARTTLS</translation>
    </message>
    <message>
        <source>Security</source>
        <translation>Sicherheit</translation>
    </message>
    <message>
        <source>Sender</source>
        <translation>Absender</translation>
    </message>
    <message>
        <source>The address that the e-mails come from</source>
        <translation>Die Adresse, von der die E-Mails kommen</translation>
    </message>
    <message>
        <source>User name</source>
        <translation>Benutzername</translation>
    </message>
    <message>
        <source>Leave it empty if the server asks for none</source>
        <translation>Leer lassen, wenn der Server keinen verlangt</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Zeigen</translation>
    </message>
    <message>
        <source>Show the password</source>
        <translation>Das Passwort anzeigen</translation>
    </message>
    <message>
        <source>Time-out</source>
        <translation>Zeitlimit</translation>
    </message>
    <message>
        <source>Time-out in minutes</source>
        <translation>Zeitlimit in Minuten</translation>
    </message>
    <message>
        <source>How long sending one e-mail may take</source>
        <translation>Wie lange das Senden einer E-Mail dauern darf</translation>
    </message>
    <message>
        <source>minutes</source>
        <translation>Minuten</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>E-mail server</source>
        <translation>E-Mail-Server</translation>
    </message>
</context>
<context>
    <name>ActionsEmailTest</name>
    <message>
        <source>Test e-mail</source>
        <translation>Test-E-Mail</translation>
    </message>
    <message>
        <source>Sends an e-mail about a sample event, using the mail server and the format that were saved last.</source>
        <translation>Sendet eine E-Mail über ein Beispielereignis, mit dem zuletzt gespeicherten Mailserver und Format.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Send</source>
        <translation>Senden</translation>
    </message>
</context>
<context>
    <name>FilterForm</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>Host</translation>
    </message>
    <message>
        <source>Host address</source>
        <translation>Adresse des Hosts</translation>
    </message>
    <message>
        <source>The IP address of the host that sends the messages</source>
        <translation>Die IP-Adresse des Hosts, der die Meldungen sendet</translation>
    </message>
    <message>
        <source>Mask, in bits</source>
        <translation>Maske in Bit</translation>
    </message>
    <message>
        <source>How many leading bits of the address must match: 32 for this one host, 24 for a network such as 192.168.1.x, 0 for any host</source>
        <translation>Wie viele führende Bits der Adresse übereinstimmen müssen: 32 für genau diesen Host, 24 für ein Netz wie 192.168.1.x, 0 für jeden Host</translation>
    </message>
    <message>
        <source>Any host</source>
        <translation>Jeder Host</translation>
    </message>
    <message>
        <source>Let every host match</source>
        <translation>Jeden Host zutreffen lassen</translation>
    </message>
    <message>
        <source>Which hosts the address and the mask match</source>
        <translation>Auf welche Hosts Adresse und Maske zutreffen</translation>
    </message>
    <message>
        <source>Address and mask in bits: 192.168.1.0 / 24 is a whole network</source>
        <translation>Adresse und Maske in Bit: 192.168.1.0 / 24 ist ein Netz</translation>
    </message>
    <message>
        <source>Facility</source>
        <translation>Facility</translation>
    </message>
    <message>
        <source>Any facility</source>
        <translation>Jede Facility</translation>
    </message>
    <message>
        <source>Let every facility match</source>
        <translation>Jede Facility zutreffen lassen</translation>
    </message>
    <message>
        <source>Severity</source>
        <translation>Schweregrad</translation>
    </message>
    <message>
        <source>Any severity</source>
        <translation>Jeder Schweregrad</translation>
    </message>
    <message>
        <source>Let every severity match</source>
        <translation>Jeden Schweregrad zutreffen lassen</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
    <message>
        <source>The whole text of the message; * stands for any text, ? for any one character</source>
        <translation>Der ganze Text der Meldung; * steht für beliebigen Text, ? für ein beliebiges Zeichen</translation>
    </message>
    <message>
        <source>Any message</source>
        <translation>Jede Meldung</translation>
    </message>
    <message>
        <source>Let every message match</source>
        <translation>Jede Meldung zutreffen lassen</translation>
    </message>
    <message>
        <source>* stands for any text, ? for any one character: *disk full*</source>
        <translation>* steht für beliebigen Text, ? für ein Zeichen: *disk full*</translation>
    </message>
</context>
<context>
    <name>HelpWindow</name>
    <message>
        <source>Quorbel Help</source>
        <translation>Quorbel-Hilfe</translation>
    </message>
    <message>
        <source>Search the book</source>
        <translation>Im Buch suchen</translation>
    </message>
    <message>
        <source>Show the chapters that contain all of these words (Ctrl+F)</source>
        <translation>Die Kapitel zeigen, die alle diese Wörter enthalten (Strg+F)</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>No chapter contains all of these words.</source>
        <translation>Kein Kapitel enthält alle diese Wörter.</translation>
    </message>
    <message>
        <source>Chapters</source>
        <translation>Kapitel</translation>
    </message>
    <message>
        <source>Chapter</source>
        <translation>Kapitel</translation>
    </message>
</context>
<context>
    <name>HomeView</name>
    <message>
        <source>Home</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Rating</source>
        <translation>Bewertung</translation>
    </message>
    <message>
        <source>Rating bar</source>
        <translation>Bewertungsbalken</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Einzelheiten</translation>
    </message>
    <message>
        <source>Events by severity</source>
        <translation>Ereignisse nach Schweregrad</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Emergency</source>
        <translation>Notfall</translation>
    </message>
    <message>
        <source>Alert</source>
        <translation>Alarm</translation>
    </message>
    <message>
        <source>Critical</source>
        <translation>Kritisch</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Notice</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Information</translation>
    </message>
    <message>
        <source>Debug</source>
        <translation>Debug</translation>
    </message>
    <message>
        <source>Unknown</source>
        <translation>Unbekannt</translation>
    </message>
    <message>
        <source>Monitor</source>
        <translation>Überwachung</translation>
    </message>
    <message>
        <source>Actions</source>
        <translation>Aktionen</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Export</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
</context>
<context>
    <name>HostBoxes</name>
    <message>
        <source>Hosts</source>
        <translation>Hosts</translation>
    </message>
    <message>
        <source>Loudest hosts</source>
        <translation>Lauteste Hosts</translation>
    </message>
    <message>
        <source>last 24 hours</source>
        <translation>letzte 24 Stunden</translation>
    </message>
    <message>
        <source>All hosts</source>
        <translation>Alle Hosts</translation>
    </message>
    <message>
        <source>Open the list of all hosts</source>
        <translation>Die Liste aller Hosts öffnen</translation>
    </message>
    <message>
        <source>Fallen silent</source>
        <translation>Verstummt</translation>
    </message>
    <message>
        <source>Loudest hosts of the last 24 hours</source>
        <translation>Lauteste Hosts der letzten 24 Stunden</translation>
    </message>
    <message>
        <source>Return shows the events of a host</source>
        <translation>Die Eingabetaste zeigt die Ereignisse eines Hosts</translation>
    </message>
    <message>
        <source>Hosts that have fallen silent</source>
        <translation>Hosts, die verstummt sind</translation>
    </message>
    <message>
        <source>More hosts that have fallen silent</source>
        <translation>Weitere Hosts, die verstummt sind</translation>
    </message>
    <message>
        <source>Loudest</source>
        <translation>Am lautesten</translation>
    </message>
    <message>
        <source>The loudest host</source>
        <translation>Der lauteste Host</translation>
    </message>
    <message>
        <source>The second loudest host</source>
        <translation>Der zweitlauteste Host</translation>
    </message>
    <message>
        <source>The host that is silent for the longest</source>
        <translation>Der Host, der am längsten stumm ist</translation>
    </message>
    <message>
        <source>How silence stands</source>
        <translation>Wie es um das Schweigen steht</translation>
    </message>
</context>
<context>
    <name>HostTexts</name>
    <message>
        <source>under 1 min</source>
        <translation>unter 1 min</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 min</translation>
    </message>
    <message>
        <source>%1 h %2 min</source>
        <translation>%1 h %2 min</translation>
    </message>
    <message>
        <source>%1 d %2 h</source>
        <translation>%1 T %2 h</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation>%1 h</translation>
    </message>
    <message>
        <source>%1 d</source>
        <translation>%1 T</translation>
    </message>
    <message>
        <source>since %1</source>
        <translation>seit %1</translation>
    </message>
    <message>
        <source>d MMM</source>
        <comment>date pattern</comment>
        <translation>d. MMM</translation>
    </message>
    <message>
        <source>Not expected any more.</source>
        <translation>Wird nicht mehr erwartet.</translation>
    </message>
    <message>
        <source>Not known for long enough to say what is usual.</source>
        <translation>Noch nicht lange genug bekannt, um zu sagen, was üblich ist.</translation>
    </message>
    <message>
        <source>Sends too irregularly for its silence to say anything.</source>
        <translation>Sendet zu unregelmäßig, als dass sein Schweigen etwas sagte.</translation>
    </message>
    <message>
        <source>Usually every %1, by day and by night. Overdue after %2.</source>
        <translation>Gewöhnlich alle %1, bei Tag und Nacht. Überfällig nach %2.</translation>
    </message>
    <message>
        <source>Usually every %1, in certain hours. Overdue when it misses %2 of these.</source>
        <translation>Gewöhnlich alle %1, zu bestimmten Stunden. Überfällig, wenn er %2 davon versäumt.</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>&lt; 1 %</source>
        <translation>&lt; 1 %</translation>
    </message>
    <message>
        <source>d MMM yyyy</source>
        <comment>date pattern</comment>
        <translation>d. MMM yyyy</translation>
    </message>
</context>
<context>
    <name>HostsView</name>
    <message>
        <source>Hosts</source>
        <translation>Hosts</translation>
    </message>
    <message>
        <source>Return shows the events of a host</source>
        <translation>Die Eingabetaste zeigt die Ereignisse eines Hosts</translation>
    </message>
    <message>
        <source>Show events</source>
        <translation>Ereignisse zeigen</translation>
    </message>
    <message>
        <source>Show the events of the host</source>
        <translation>Die Ereignisse des Hosts zeigen</translation>
    </message>
    <message>
        <source>Open the events page with the events of the selected host alone</source>
        <translation>Die Ereignisseite nur mit den Ereignissen des ausgewählten Hosts öffnen</translation>
    </message>
    <message>
        <source>Stop expecting</source>
        <translation>Nicht mehr erwarten</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Go back to where this list was opened</source>
        <translation>Zurück dorthin, wo diese Liste geöffnet wurde</translation>
    </message>
</context>
<context>
    <name>KnownText</name>
    <message>
        <source>Emergency</source>
        <translation>Notfall</translation>
    </message>
    <message>
        <source>Alert</source>
        <translation>Alarm</translation>
    </message>
    <message>
        <source>Critical</source>
        <translation>Kritisch</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Notice</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Information</translation>
    </message>
    <message>
        <source>Informational</source>
        <translation>Information</translation>
    </message>
    <message>
        <source>Debug</source>
        <translation>Debug</translation>
    </message>
    <message>
        <source>Unknown</source>
        <translation>Unbekannt</translation>
    </message>
    <message>
        <source>Normal</source>
        <translation>Normal</translation>
    </message>
    <message>
        <source>Moderate</source>
        <translation>Mittel</translation>
    </message>
    <message>
        <source>Severe</source>
        <translation>Schwer</translation>
    </message>
    <message>
        <source>Unrated</source>
        <translation>Ohne Bewertung</translation>
    </message>
    <message>
        <source>Any</source>
        <translation>Beliebig</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>%1 of %2 events could not be put back: %3</source>
        <translation>%1 von %2 Ereignissen konnten nicht wiederhergestellt werden: %3</translation>
    </message>
    <message>
        <source>%1 cannot stand in a log file</source>
        <translation>%1 können in keiner Protokolldatei stehen</translation>
    </message>
    <message>
        <source>%1 could not be rewritten: %2</source>
        <translation>%1 konnte nicht neu geschrieben werden: %2</translation>
    </message>
    <message>
        <source>the service is stopping</source>
        <translation>der Dienst wird beendet</translation>
    </message>
    <message>
        <source>they are of too many days</source>
        <translation>sie stammen von zu vielen Tagen</translation>
    </message>
    <message>
        <source>The events to put back are not an array</source>
        <translation>Die wiederherzustellenden Ereignisse sind keine Liste</translation>
    </message>
    <message>
        <source>The command cannot be read: %1</source>
        <translation>Der Befehl ist nicht lesbar: %1</translation>
    </message>
    <message>
        <source>There is no such command</source>
        <translation>Diesen Befehl gibt es nicht</translation>
    </message>
    <message>
        <source>There is no filter &quot;%1&quot; any more</source>
        <translation>Den Filter „%1“ gibt es nicht mehr</translation>
    </message>
    <message>
        <source>There is a filter &quot;%1&quot; already</source>
        <translation>Einen Filter „%1“ gibt es schon</translation>
    </message>
    <message>
        <source>The filters cannot be kept: %1</source>
        <translation>Die Filter können nicht aufbewahrt werden: %1</translation>
    </message>
    <message>
        <source>Another window is changing its filters. Try again</source>
        <translation>Ein anderes Fenster ändert gerade seine Filter. Versuchen Sie es noch einmal</translation>
    </message>
    <message>
        <source>%1 is too large for a file of filters</source>
        <translation>%1 ist zu groß für eine Filterdatei</translation>
    </message>
    <message>
        <source>%1, line %2: %3</source>
        <translation>%1, Zeile %2: %3</translation>
    </message>
    <message>
        <source>%1 could not be read</source>
        <translation>%1 konnte nicht gelesen werden</translation>
    </message>
    <message>
        <source>%1 could not be written: %2</source>
        <translation>%1 konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>%1 cannot be used: %2</source>
        <translation>%1 ist nicht benutzbar: %2</translation>
    </message>
    <message>
        <source>the file is too large</source>
        <translation>die Datei ist zu groß</translation>
    </message>
    <message>
        <source>this is no file of filters</source>
        <translation>dies ist keine Filterdatei</translation>
    </message>
    <message>
        <source>the file was written by a newer version</source>
        <translation>die Datei stammt von einer neueren Version</translation>
    </message>
    <message>
        <source>there are bytes that are no UTF-8</source>
        <translation>sie enthält Bytes, die kein UTF-8 sind</translation>
    </message>
    <message>
        <source>the line is too long</source>
        <translation>die Zeile ist zu lang</translation>
    </message>
    <message>
        <source>the name is too long</source>
        <translation>der Name ist zu lang</translation>
    </message>
    <message>
        <source>the name has characters that are not seen</source>
        <translation>der Name enthält unsichtbare Zeichen</translation>
    </message>
    <message>
        <source>there are two filters &quot;%1&quot;</source>
        <translation>es gibt zwei Filter „%1“</translation>
    </message>
    <message>
        <source>there are too many filters</source>
        <translation>es sind zu viele Filter</translation>
    </message>
    <message>
        <source>the value of &quot;%1&quot; cannot be read</source>
        <translation>der Wert von „%1“ ist nicht lesbar</translation>
    </message>
    <message>
        <source>&quot;%1&quot; needs a value</source>
        <translation>„%1“ braucht einen Wert</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not known</source>
        <translation>„%1“ ist nicht bekannt</translation>
    </message>
    <message>
        <source>&quot;%1&quot; stands before any filter</source>
        <translation>„%1“ steht vor dem ersten Filter</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no regular expression: %2</source>
        <translation>„%1“ ist kein regulärer Ausdruck: %2</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no colour that there is</source>
        <translation>„%1“ ist keine der Farben</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no rating that there is</source>
        <translation>„%1“ ist keine der Bewertungen</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no severity that there is</source>
        <translation>„%1“ ist keiner der Schweregrade</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no span of time that there is</source>
        <translation>„%1“ ist keiner der Zeiträume</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no moment like 2026-11-21T02:00:00Z</source>
        <translation>„%1“ ist kein Zeitpunkt wie 2026-11-21T02:00:00Z</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is one condition too many</source>
        <translation>„%1“ ist eine Bedingung zu viel</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is one expression too many</source>
        <translation>„%1“ ist ein Ausdruck zu viel</translation>
    </message>
    <message>
        <source>&quot;%1&quot; does not follow an expression</source>
        <translation>„%1“ folgt keinem Ausdruck</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is given twice</source>
        <translation>„%1“ ist zweimal angegeben</translation>
    </message>
    <message>
        <source>expression too large</source>
        <translation>Ausdruck zu groß</translation>
    </message>
    <message>
        <source>invalid escape sequence: %1</source>
        <translation>ungültige Escape-Sequenz: %1</translation>
    </message>
    <message>
        <source>invalid character class: %1</source>
        <translation>ungültige Zeichenklasse: %1</translation>
    </message>
    <message>
        <source>invalid character class range: %1</source>
        <translation>ungültiger Bereich in der Zeichenklasse: %1</translation>
    </message>
    <message>
        <source>missing ]: %1</source>
        <translation>] fehlt: %1</translation>
    </message>
    <message>
        <source>missing ): %1</source>
        <translation>) fehlt: %1</translation>
    </message>
    <message>
        <source>unexpected ): %1</source>
        <translation>unerwartete ): %1</translation>
    </message>
    <message>
        <source>trailing \: %1</source>
        <translation>\ am Ende: %1</translation>
    </message>
    <message>
        <source>no argument for repetition operator: %1</source>
        <translation>dem Wiederholungszeichen fehlt das Argument: %1</translation>
    </message>
    <message>
        <source>invalid repetition size: %1</source>
        <translation>ungültige Anzahl von Wiederholungen: %1</translation>
    </message>
    <message>
        <source>bad repetition operator: %1</source>
        <translation>falsches Wiederholungszeichen: %1</translation>
    </message>
    <message>
        <source>invalid perl operator: %1</source>
        <translation>ungültiger Perl-Operator: %1</translation>
    </message>
    <message>
        <source>invalid UTF-8: %1</source>
        <translation>ungültiges UTF-8: %1</translation>
    </message>
    <message>
        <source>invalid named capture group: %1</source>
        <translation>ungültige benannte Gruppe: %1</translation>
    </message>
    <message>
        <source>&quot;%1&quot; names &quot;%2&quot;, which is no network</source>
        <translation>„%1“ nennt „%2“; das ist kein Netz</translation>
    </message>
    <message>
        <source>No mail server is set</source>
        <translation>Kein Mailserver ist eingetragen</translation>
    </message>
    <message>
        <source>There are no recipients</source>
        <translation>Es gibt keine Empfänger</translation>
    </message>
    <message>
        <source>The sender %1 is not a valid e-mail address</source>
        <translation>Der Absender %1 ist keine gültige E-Mail-Adresse</translation>
    </message>
    <message>
        <source>%1 is not a valid e-mail address</source>
        <translation>%1 ist keine gültige E-Mail-Adresse</translation>
    </message>
    <message>
        <source>The mail server&apos;s connection security %1 is not one of &quot;None&quot;, &quot;STARTTLS&quot; or &quot;SSL/TLS&quot;</source>
        <translation>Für den Mailserver: %1 ist keine Verbindungssicherheit; es gibt „Keine“, „STARTTLS“ und „SSL/TLS“</translation>
    </message>
    <message>
        <source>No connection security is chosen for the mail server</source>
        <translation>Keine Verbindungssicherheit ist für den Mailserver gewählt</translation>
    </message>
    <message>
        <source>the password is sent without encryption only with &quot;None&quot;</source>
        <translation>das Passwort wird nur mit „Keine“ unverschlüsselt gesendet</translation>
    </message>
    <message>
        <source>The name of the mail server is not valid: %1</source>
        <translation>Der Name des Mailservers ist ungültig: %1</translation>
    </message>
    <message>
        <source>The mail server %1 is not known</source>
        <translation>Der Mailserver %1 ist nicht bekannt</translation>
    </message>
    <message>
        <source>The mail server %1 cannot be reached on port %2</source>
        <translation>Der Mailserver %1 ist an Port %2 nicht zu erreichen</translation>
    </message>
    <message>
        <source>The mail server %1 did not answer in time</source>
        <translation>Der Mailserver %1 hat nicht rechtzeitig geantwortet</translation>
    </message>
    <message>
        <source>The mail server %1 refused the user name or the password: %2</source>
        <translation>Der Mailserver %1 hat Benutzername oder Passwort abgelehnt: %2</translation>
    </message>
    <message>
        <source>The mail server %1 refused the user name or the password</source>
        <translation>Der Mailserver %1 hat Benutzername oder Passwort abgelehnt</translation>
    </message>
    <message>
        <source>The mail server %1 does not offer STARTTLS</source>
        <translation>Der Mailserver %1 bietet STARTTLS nicht an</translation>
    </message>
    <message>
        <source>The certificate of the mail server %1 is not trusted</source>
        <translation>Dem Zertifikat des Mailservers %1 wird nicht vertraut</translation>
    </message>
    <message>
        <source>The mail server %1 refused all recipients: %2</source>
        <translation>Der Mailserver %1 hat alle Empfänger abgelehnt: %2</translation>
    </message>
    <message>
        <source>The mail server %1 refused all recipients</source>
        <translation>Der Mailserver %1 hat alle Empfänger abgelehnt</translation>
    </message>
    <message>
        <source>The mail server %1 refused the e-mail: %2</source>
        <translation>Der Mailserver %1 hat die E-Mail abgelehnt: %2</translation>
    </message>
    <message>
        <source>The mail server %1 refused the e-mail</source>
        <translation>Der Mailserver %1 hat die E-Mail abgelehnt</translation>
    </message>
    <message>
        <source>The mail server refused %1</source>
        <translation>Der Mailserver hat abgelehnt: %1</translation>
    </message>
    <message>
        <source>The e-mail could not be sent: %1</source>
        <translation>Die E-Mail konnte nicht gesendet werden: %1</translation>
    </message>
    <message>
        <source>The service is stopping</source>
        <translation>Der Dienst wird gerade angehalten</translation>
    </message>
    <message>
        <source>Too many commands are waiting</source>
        <translation>Zu viele Befehle warten</translation>
    </message>
    <message>
        <source>Too many e-mails are waiting</source>
        <translation>Zu viele E-Mails warten</translation>
    </message>
    <message>
        <source>the command ended with status %1</source>
        <translation>der Befehl endete mit Status %1</translation>
    </message>
    <message>
        <source>the command was killed by signal %1</source>
        <translation>der Befehl wurde durch Signal %1 beendet</translation>
    </message>
    <message>
        <source>the command took too long and was stopped</source>
        <translation>der Befehl dauerte zu lange und wurde angehalten</translation>
    </message>
    <message>
        <source>the command could not be stopped</source>
        <translation>der Befehl ließ sich nicht anhalten</translation>
    </message>
    <message>
        <source>%1 cannot be run: %2</source>
        <translation>%1 lässt sich nicht ausführen: %2</translation>
    </message>
    <message>
        <source>%1 is not the full path of a file</source>
        <translation>%1 ist nicht der vollständige Pfad einer Datei</translation>
    </message>
</context>
<context>
    <name>Language</name>
    <message>
        <source>en</source>
        <extracomment>The language that these texts are in, as files are named: de, fr, pt_BR. Not shown.</extracomment>
        <translation>de</translation>
    </message>
</context>
<context>
    <name>MarkColours</name>
    <message>
        <source>Violet</source>
        <translation>Violett</translation>
    </message>
    <message>
        <source>Teal</source>
        <translation>Petrol</translation>
    </message>
    <message>
        <source>Pink</source>
        <translation>Rosa</translation>
    </message>
    <message>
        <source>Brown</source>
        <translation>Braun</translation>
    </message>
    <message>
        <source>Olive</source>
        <translation>Oliv</translation>
    </message>
    <message>
        <source>Grey</source>
        <translation>Grau</translation>
    </message>
</context>
<context>
    <name>PopupView</name>
    <message>
        <source>Alert</source>
        <translation>Alarm</translation>
    </message>
    <message>
        <source>Quorbel Alert</source>
        <translation>Quorbel-Alarm</translation>
    </message>
    <message>
        <source>Rating</source>
        <translation>Bewertung</translation>
    </message>
    <message>
        <source>Severity</source>
        <translation>Schweregrad</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Einzelheiten</translation>
    </message>
    <message>
        <source>Learn more about this event...</source>
        <translation>Mehr über dieses Ereignis...</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>stays open</source>
        <translation>bleibt offen</translation>
    </message>
    <message>
        <source>Stays open while the pointer is over it</source>
        <translation>Bleibt offen, solange der Mauszeiger darüber ist</translation>
    </message>
    <message>
        <source>Waiting alerts</source>
        <translation>Wartende Alarme</translation>
    </message>
    <message>
        <source>Skip all</source>
        <translation>Alle überspringen</translation>
    </message>
    <message>
        <source>Skip all waiting alerts</source>
        <translation>Alle wartenden Alarme überspringen</translation>
    </message>
    <message>
        <source>Close this alert, and show none of those that wait (Shift+Esc)</source>
        <translation>Diesen Alarm schließen und keinen der wartenden zeigen (Umschalt+Esc)</translation>
    </message>
</context>
<context>
    <name>Questions</name>
    <message>
        <source>Disks and file systems</source>
        <translation>Datenträger und Dateisysteme</translation>
    </message>
    <message>
        <source>Disk read and write errors</source>
        <translation>Lese- und Schreibfehler von Datenträgern</translation>
    </message>
    <message>
        <source>Disks and drives that could not read or write a block</source>
        <translation>Datenträger und Laufwerke, die einen Block nicht lesen oder schreiben konnten</translation>
    </message>
    <message>
        <source>Disk health warnings</source>
        <translation>Warnungen zum Zustand von Datenträgern</translation>
    </message>
    <message>
        <source>What disks report of their own decay: bad sectors, failing self-tests</source>
        <translation>Was Datenträger von ihrem Verschleiß melden: defekte Sektoren, fehlgeschlagene Selbsttests</translation>
    </message>
    <message>
        <source>File system errors</source>
        <translation>Dateisystemfehler</translation>
    </message>
    <message>
        <source>File systems that found themselves damaged or went read-only</source>
        <translation>Dateisysteme, die beschädigt sind oder nur noch lesbar wurden</translation>
    </message>
    <message>
        <source>Disk array degraded or rebuilding</source>
        <translation>RAID eingeschränkt oder im Wiederaufbau</translation>
    </message>
    <message>
        <source>Arrays that lost a disk, or copy their data to a new one</source>
        <translation>Verbünde, die einen Datenträger verloren oder ihre Daten auf einen neuen kopieren</translation>
    </message>
    <message>
        <source>Disk full</source>
        <translation>Datenträger voll</translation>
    </message>
    <message>
        <source>File systems, volumes and quotas without room</source>
        <translation>Dateisysteme, Volumes und Kontingente ohne Platz</translation>
    </message>
    <message>
        <source>Storage that is out of reach</source>
        <translation>Unerreichbarer Speicher</translation>
    </message>
    <message>
        <source>Network file systems, iSCSI targets and paths to storage that do not answer</source>
        <translation>Netzwerkdateisysteme, iSCSI-Ziele und Speicherpfade, die nicht antworten</translation>
    </message>
    <message>
        <source>Logins and accounts</source>
        <translation>Anmeldungen und Konten</translation>
    </message>
    <message>
        <source>Failed logins</source>
        <translation>Fehlgeschlagene Anmeldungen</translation>
    </message>
    <message>
        <source>Wrong passwords and keys, unknown users</source>
        <translation>Falsche Passwörter und Schlüssel, unbekannte Benutzer</translation>
    </message>
    <message>
        <source>Logins as root</source>
        <translation>Anmeldungen als root</translation>
    </message>
    <message>
        <source>Sessions of root and other administrators on devices that were opened</source>
        <translation>Geöffnete Sitzungen von root und anderen Administratoren auf Geräten</translation>
    </message>
    <message>
        <source>Commands run with sudo</source>
        <translation>Mit sudo ausgeführte Befehle</translation>
    </message>
    <message>
        <source>What was run as another user with sudo, su or doas</source>
        <translation>Was mit sudo, su oder doas als anderer Benutzer ausgeführt wurde</translation>
    </message>
    <message>
        <source>Refused sudo and su</source>
        <translation>Verweigertes sudo und su</translation>
    </message>
    <message>
        <source>Who tried to become another user and was not allowed to, or did not know the password</source>
        <translation>Wer ein anderer Benutzer werden wollte und nicht durfte oder das Passwort nicht kannte</translation>
    </message>
    <message>
        <source>New accounts and groups</source>
        <translation>Neue Konten und Gruppen</translation>
    </message>
    <message>
        <source>Users and groups that were created on a machine or a device</source>
        <translation>Benutzer und Gruppen, die auf einem Rechner oder Gerät angelegt wurden</translation>
    </message>
    <message>
        <source>Accounts changed or deleted</source>
        <translation>Geänderte oder gelöschte Konten</translation>
    </message>
    <message>
        <source>Passwords and memberships that were changed, users that were removed</source>
        <translation>Geänderte Passwörter und Mitgliedschaften, entfernte Benutzer</translation>
    </message>
    <message>
        <source>Locked accounts</source>
        <translation>Gesperrte Konten</translation>
    </message>
    <message>
        <source>Users that are shut out after too many attempts</source>
        <translation>Benutzer, die nach zu vielen Versuchen ausgesperrt sind</translation>
    </message>
    <message>
        <source>Memory and programs</source>
        <translation>Speicher und Programme</translation>
    </message>
    <message>
        <source>Out of memory</source>
        <translation>Kein Speicher mehr</translation>
    </message>
    <message>
        <source>Machines without memory, and the programs that were ended for it</source>
        <translation>Rechner ohne freien Speicher und die deswegen beendeten Programme</translation>
    </message>
    <message>
        <source>Crashed programs</source>
        <translation>Abgestürzte Programme</translation>
    </message>
    <message>
        <source>Programs that ended with a fault of their own</source>
        <translation>Programme, die durch einen eigenen Fehler endeten</translation>
    </message>
    <message>
        <source>Services that failed</source>
        <translation>Ausgefallene Dienste</translation>
    </message>
    <message>
        <source>Services that did not start or ended with an error</source>
        <translation>Dienste, die nicht starteten oder mit einem Fehler endeten</translation>
    </message>
    <message>
        <source>Hung tasks and lock-ups</source>
        <translation>Hängende Programme und Blockaden</translation>
    </message>
    <message>
        <source>Processors and programs that stood still</source>
        <translation>Prozessoren und Programme, die stillstanden</translation>
    </message>
    <message>
        <source>Limits reached</source>
        <translation>Erreichte Grenzen</translation>
    </message>
    <message>
        <source>Too many files, processes, connections or entries of a table</source>
        <translation>Zu viele Dateien, Prozesse, Verbindungen oder Tabelleneinträge</translation>
    </message>
    <message>
        <source>Starts and restarts</source>
        <translation>Starts und Neustarts</translation>
    </message>
    <message>
        <source>Machines that started</source>
        <translation>Gestartete Rechner</translation>
    </message>
    <message>
        <source>Computers whose kernel began to run</source>
        <translation>Computer, deren Kernel anlief</translation>
    </message>
    <message>
        <source>Machines shutting down</source>
        <translation>Herunterfahrende Rechner</translation>
    </message>
    <message>
        <source>Computers that were shut down or restarted in an orderly way</source>
        <translation>Computer, die ordentlich heruntergefahren oder neu gestartet wurden</translation>
    </message>
    <message>
        <source>Devices restarted</source>
        <translation>Neu gestartete Geräte</translation>
    </message>
    <message>
        <source>Switches, routers, firewalls and other devices that started anew</source>
        <translation>Switches, Router, Firewalls und andere Geräte, die neu starteten</translation>
    </message>
    <message>
        <source>Kernel panics and faults</source>
        <translation>Kernel-Panik und Kernel-Fehler</translation>
    </message>
    <message>
        <source>Kernels that stopped or found an error of their own</source>
        <translation>Kernel, die anhielten oder einen eigenen Fehler fanden</translation>
    </message>
    <message>
        <source>Network</source>
        <translation>Netzwerk</translation>
    </message>
    <message>
        <source>Links down</source>
        <translation>Verbindungen getrennt</translation>
    </message>
    <message>
        <source>Ports and interfaces that lost their connection</source>
        <translation>Ports und Schnittstellen, die ihre Verbindung verloren</translation>
    </message>
    <message>
        <source>Links up</source>
        <translation>Verbindungen wieder da</translation>
    </message>
    <message>
        <source>Ports and interfaces that are connected again</source>
        <translation>Ports und Schnittstellen, die wieder verbunden sind</translation>
    </message>
    <message>
        <source>Ports shut by the switch</source>
        <translation>Vom Switch abgeschaltete Ports</translation>
    </message>
    <message>
        <source>Ports that a switch disabled by itself: loops, wrong devices, errors</source>
        <translation>Ports, die ein Switch selbst abschaltete: Schleifen, falsche Geräte, Fehler</translation>
    </message>
    <message>
        <source>Spanning tree changes</source>
        <translation>Spanning-Tree-Änderungen</translation>
    </message>
    <message>
        <source>Changes of the paths through a switched network</source>
        <translation>Änderungen der Wege durch ein geswitchtes Netz</translation>
    </message>
    <message>
        <source>Routing neighbours lost</source>
        <translation>Verlorene Routing-Nachbarn</translation>
    </message>
    <message>
        <source>Routers that ended a BGP, OSPF, EIGRP or similar relation, and hot-standby changes</source>
        <translation>Router, die eine Beziehung über BGP, OSPF, EIGRP oder Ähnliches beendeten, und Hot-Standby-Wechsel</translation>
    </message>
    <message>
        <source>Addresses in conflict</source>
        <translation>Adresskonflikte</translation>
    </message>
    <message>
        <source>An address that two devices use, or that moves between ports</source>
        <translation>Eine Adresse, die zwei Geräte benutzen oder die zwischen Ports wechselt</translation>
    </message>
    <message>
        <source>Names that could not be resolved</source>
        <translation>Nicht auflösbare Namen</translation>
    </message>
    <message>
        <source>Look-ups in the domain name system that failed, and servers that did not answer</source>
        <translation>Fehlgeschlagene DNS-Abfragen und Server, die nicht antworteten</translation>
    </message>
    <message>
        <source>Wireless clients refused</source>
        <translation>Abgewiesene WLAN-Clients</translation>
    </message>
    <message>
        <source>Devices that an access point did not let in, or threw out</source>
        <translation>Geräte, die ein Access-Point nicht einließ oder hinauswarf</translation>
    </message>
    <message>
        <source>DHCP</source>
        <translation>DHCP</translation>
    </message>
    <message>
        <source>DHCP leases</source>
        <translation>DHCP-Leases</translation>
    </message>
    <message>
        <source>Addresses that were handed out</source>
        <translation>Vergebene Adressen</translation>
    </message>
    <message>
        <source>DHCP without free addresses</source>
        <translation>DHCP ohne freie Adressen</translation>
    </message>
    <message>
        <source>Pools that ran out of addresses, and clients that got none</source>
        <translation>Erschöpfte Adressbereiche und Clients, die keine Adresse bekamen</translation>
    </message>
    <message>
        <source>DHCP requests refused</source>
        <translation>Abgelehnte DHCP-Anfragen</translation>
    </message>
    <message>
        <source>Addresses that were asked for and not granted, declined by the client, or offered by a foreign server</source>
        <translation>Adressen, die erbeten und nicht gewährt, vom Client abgelehnt oder von einem fremden Server angeboten wurden</translation>
    </message>
    <message>
        <source>Firewalls and attacks</source>
        <translation>Firewalls und Angriffe</translation>
    </message>
    <message>
        <source>Connections blocked</source>
        <translation>Blockierte Verbindungen</translation>
    </message>
    <message>
        <source>Packets and connections that a firewall or a list of rules did not let through</source>
        <translation>Pakete und Verbindungen, die eine Firewall oder eine Regelliste nicht durchließ</translation>
    </message>
    <message>
        <source>Scans and floods</source>
        <translation>Scans und Fluten</translation>
    </message>
    <message>
        <source>Signs of somebody who looks for a way in, or keeps others out</source>
        <translation>Anzeichen, dass jemand einen Weg hinein sucht oder andere aussperrt</translation>
    </message>
    <message>
        <source>Addresses banned</source>
        <translation>Gesperrte Adressen</translation>
    </message>
    <message>
        <source>Addresses that were shut out because of what came from them</source>
        <translation>Adressen, die wegen dessen, was von ihnen kam, ausgesperrt wurden</translation>
    </message>
    <message>
        <source>Denied by a security policy</source>
        <translation>Von einer Sicherheitsrichtlinie verweigert</translation>
    </message>
    <message>
        <source>What SELinux, AppArmor and the like did not let programs do</source>
        <translation>Was SELinux, AppArmor und Ähnliches Programmen nicht erlaubten</translation>
    </message>
    <message>
        <source>Malware found</source>
        <translation>Gefundene Schadsoftware</translation>
    </message>
    <message>
        <source>What virus scanners and mail filters found</source>
        <translation>Was Virenscanner und Mailfilter fanden</translation>
    </message>
    <message>
        <source>VPN</source>
        <translation>VPN</translation>
    </message>
    <message>
        <source>VPN tunnels up</source>
        <translation>VPN-Tunnel verbunden</translation>
    </message>
    <message>
        <source>Tunnels and clients that were connected</source>
        <translation>Tunnel und Clients, die verbunden wurden</translation>
    </message>
    <message>
        <source>VPN tunnels down</source>
        <translation>VPN-Tunnel getrennt</translation>
    </message>
    <message>
        <source>Tunnels and clients that were disconnected or could not connect</source>
        <translation>Tunnel und Clients, die getrennt wurden oder sich nicht verbinden konnten</translation>
    </message>
    <message>
        <source>VPN logins refused</source>
        <translation>Abgelehnte VPN-Anmeldungen</translation>
    </message>
    <message>
        <source>Who could not authenticate at a VPN</source>
        <translation>Wer sich an einem VPN nicht anmelden konnte</translation>
    </message>
    <message>
        <source>Mail</source>
        <translation>Mail</translation>
    </message>
    <message>
        <source>Mail refused</source>
        <translation>Abgelehnte Mails</translation>
    </message>
    <message>
        <source>Messages that a mail server did not take</source>
        <translation>Nachrichten, die ein Mailserver nicht annahm</translation>
    </message>
    <message>
        <source>Mail not delivered</source>
        <translation>Nicht zugestellte Mails</translation>
    </message>
    <message>
        <source>Messages that a mail server could not hand on, for now or for good</source>
        <translation>Nachrichten, die ein Mailserver vorerst oder endgültig nicht weitergeben konnte</translation>
    </message>
    <message>
        <source>Mail logins refused</source>
        <translation>Abgelehnte Mail-Anmeldungen</translation>
    </message>
    <message>
        <source>Wrong passwords at mail servers</source>
        <translation>Falsche Passwörter an Mailservern</translation>
    </message>
    <message>
        <source>Certificates and encryption</source>
        <translation>Zertifikate und Verschlüsselung</translation>
    </message>
    <message>
        <source>Certificates that expire</source>
        <translation>Ablaufende Zertifikate</translation>
    </message>
    <message>
        <source>Certificates that are out of date, or soon will be</source>
        <translation>Zertifikate, die abgelaufen sind oder es bald sein werden</translation>
    </message>
    <message>
        <source>Encryption that failed</source>
        <translation>Gescheiterte Verschlüsselung</translation>
    </message>
    <message>
        <source>Connections that ended because the sides did not trust or understand one another</source>
        <translation>Verbindungen, die endeten, weil die Seiten einander nicht vertrauten oder verstanden</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Clock trouble</source>
        <translation>Ärger mit der Uhr</translation>
    </message>
    <message>
        <source>Clocks that jump, stand still or are too far off</source>
        <translation>Uhren, die springen, stillstehen oder zu weit abweichen</translation>
    </message>
    <message>
        <source>Time servers lost</source>
        <translation>Verlorene Zeitserver</translation>
    </message>
    <message>
        <source>Sources of time that do not answer or are not believed</source>
        <translation>Zeitquellen, die nicht antworten oder denen nicht geglaubt wird</translation>
    </message>
    <message>
        <source>Hardware</source>
        <translation>Hardware</translation>
    </message>
    <message>
        <source>Memory and processor errors</source>
        <translation>Speicher- und Prozessorfehler</translation>
    </message>
    <message>
        <source>Errors that memory and processors reported of themselves</source>
        <translation>Fehler, die Speicher und Prozessoren von sich selbst meldeten</translation>
    </message>
    <message>
        <source>Temperature and fans</source>
        <translation>Temperatur und Lüfter</translation>
    </message>
    <message>
        <source>What is too hot, and fans that stand still</source>
        <translation>Was zu heiß ist, und Lüfter, die stillstehen</translation>
    </message>
    <message>
        <source>Power trouble</source>
        <translation>Ärger mit der Stromversorgung</translation>
    </message>
    <message>
        <source>Power supplies that failed, mains that went away, batteries</source>
        <translation>Ausgefallene Netzteile, Netzausfälle, Batterien</translation>
    </message>
    <message>
        <source>Devices plugged in</source>
        <translation>Angeschlossene Geräte</translation>
    </message>
    <message>
        <source>USB and other devices that appeared or went away</source>
        <translation>USB- und andere Geräte, die auftauchten oder verschwanden</translation>
    </message>
    <message>
        <source>Bus and card errors</source>
        <translation>Bus- und Kartenfehler</translation>
    </message>
    <message>
        <source>Errors between a machine and its cards, and cards that gave up</source>
        <translation>Fehler zwischen einem Rechner und seinen Karten, und Karten, die ausfielen</translation>
    </message>
    <message>
        <source>Changes</source>
        <translation>Änderungen</translation>
    </message>
    <message>
        <source>Configuration changed</source>
        <translation>Geänderte Konfiguration</translation>
    </message>
    <message>
        <source>Who changed the configuration of a device, and when</source>
        <translation>Wer die Konfiguration eines Geräts wann geändert hat</translation>
    </message>
    <message>
        <source>Software installed or removed</source>
        <translation>Installierte oder entfernte Software</translation>
    </message>
    <message>
        <source>Packages and firmware that were installed, updated or taken off</source>
        <translation>Pakete und Firmware, die installiert, aktualisiert oder entfernt wurden</translation>
    </message>
    <message>
        <source>Jobs that failed</source>
        <translation>Fehlgeschlagene Aufträge</translation>
    </message>
    <message>
        <source>Scheduled jobs that ended with an error or could not begin</source>
        <translation>Geplante Aufträge, die mit einem Fehler endeten oder nicht beginnen konnten</translation>
    </message>
    <message>
        <source>Backups</source>
        <translation>Datensicherungen</translation>
    </message>
    <message>
        <source>Backups that ran, and those that did not</source>
        <translation>Datensicherungen, die liefen, und solche, die ausblieben</translation>
    </message>
    <message>
        <source>Silence and gaps</source>
        <translation>Stille und Lücken</translation>
    </message>
    <message>
        <source>Messages lost or held back</source>
        <translation>Verlorene oder zurückgehaltene Meldungen</translation>
    </message>
    <message>
        <source>Events that you do not see, because somebody on the way dropped them</source>
        <translation>Ereignisse, die Sie nicht sehen, weil sie unterwegs verworfen wurden</translation>
    </message>
    <message>
        <source>Logging started or stopped</source>
        <translation>Protokollierung begonnen oder beendet</translation>
    </message>
    <message>
        <source>Places where the record begins or ends: log programs that start, stop or rotate</source>
        <translation>Stellen, an denen die Aufzeichnung beginnt oder endet: Protokollprogramme, die starten, enden oder rotieren</translation>
    </message>
    <message>
        <source>Signs of life</source>
        <translation>Lebenszeichen</translation>
    </message>
    <message>
        <source>What hosts send now and then to say that they are still there: where it stops, a host is silent</source>
        <translation>Was Hosts ab und zu senden, um zu zeigen, dass es sie noch gibt: wo es aufhört, schweigt ein Host</translation>
    </message>
</context>
<context>
    <name>RecipientsList</name>
    <message>
        <source>New recipient</source>
        <translation>Neuer Empfänger</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Add recipient</source>
        <translation>Empfänger hinzufügen</translation>
    </message>
    <message>
        <source>Recipients</source>
        <translation>Empfänger</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected recipient</source>
        <translation>Den ausgewählten Empfänger entfernen</translation>
    </message>
    <message>
        <source>Remove the selected recipient from the list</source>
        <translation>Den ausgewählten Empfänger aus der Liste entfernen</translation>
    </message>
</context>
<context>
    <name>ReportsView</name>
    <message>
        <source>Reports</source>
        <translation>Berichte</translation>
    </message>
    <message>
        <source>Kind of report</source>
        <translation>Art des Berichts</translation>
    </message>
    <message>
        <source>What the events are grouped by</source>
        <translation>Wonach die Ereignisse gruppiert werden</translation>
    </message>
    <message>
        <source>Choose a report</source>
        <translation>Bericht wählen</translation>
    </message>
    <message>
        <source>Events by host</source>
        <translation>Ereignisse nach Host</translation>
    </message>
    <message>
        <source>Events by message</source>
        <translation>Ereignisse nach Meldung</translation>
    </message>
    <message>
        <source>Events by priority</source>
        <translation>Ereignisse nach Priorität</translation>
    </message>
    <message>
        <source>Events by date</source>
        <translation>Ereignisse nach Datum</translation>
    </message>
    <message>
        <source>from</source>
        <translation>aus</translation>
    </message>
    <message>
        <source>Log file</source>
        <translation>Protokolldatei</translation>
    </message>
    <message>
        <source>Which log file is read</source>
        <translation>Welche Protokolldatei gelesen wird</translation>
    </message>
    <message>
        <source>Display</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Display the report</source>
        <translation>Den Bericht anzeigen</translation>
    </message>
    <message>
        <source>Read the log and show its events in groups</source>
        <translation>Das Protokoll lesen und seine Ereignisse in Gruppen zeigen</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Bericht</translation>
    </message>
    <message>
        <source>Export...</source>
        <translation>Exportieren...</translation>
    </message>
    <message>
        <source>Export the report</source>
        <translation>Den Bericht exportieren</translation>
    </message>
    <message>
        <source>Write all rows of the table, as they are shown, to a text file</source>
        <translation>Alle Zeilen der Tabelle, wie angezeigt, in eine Textdatei schreiben</translation>
    </message>
    <message>
        <source>Print...</source>
        <translation>Drucken...</translation>
    </message>
    <message>
        <source>Print the report</source>
        <translation>Den Bericht drucken</translation>
    </message>
    <message>
        <source>Print the table as it is shown</source>
        <translation>Die Tabelle drucken, wie sie angezeigt wird</translation>
    </message>
    <message>
        <source>What was read</source>
        <translation>Was gelesen wurde</translation>
    </message>
    <message>
        <source>Largest first</source>
        <translation>Größte zuerst</translation>
    </message>
    <message>
        <source>Largest groups first</source>
        <translation>Größte Gruppen zuerst</translation>
    </message>
    <message>
        <source>Show the groups with the most events first; exports and prints keep the order in which they first appear</source>
        <translation>Die Gruppen mit den meisten Ereignissen zuerst zeigen; beim Exportieren und Drucken bleibt die Reihenfolge, in der sie zum ersten Mal vorkommen</translation>
    </message>
    <message>
        <source>Expand all</source>
        <translation>Alle aufklappen</translation>
    </message>
    <message>
        <source>Expand all groups</source>
        <translation>Alle Gruppen aufklappen</translation>
    </message>
    <message>
        <source>Show the events of all groups (key * in the table)</source>
        <translation>Die Ereignisse aller Gruppen zeigen (Taste * in der Tabelle)</translation>
    </message>
    <message>
        <source>Collapse all</source>
        <translation>Alle zuklappen</translation>
    </message>
    <message>
        <source>Collapse all groups</source>
        <translation>Alle Gruppen zuklappen</translation>
    </message>
    <message>
        <source>Hide the events of all groups (key / in the table)</source>
        <translation>Die Ereignisse aller Gruppen verbergen (Taste / in der Tabelle)</translation>
    </message>
</context>
<context>
    <name>ScanView</name>
    <message>
        <source>Events</source>
        <translation>Ereignisse</translation>
    </message>
    <message>
        <source>Number of events</source>
        <translation>Anzahl der Ereignisse</translation>
    </message>
    <message>
        <source>Find in events</source>
        <translation>In Ereignissen suchen</translation>
    </message>
    <message>
        <source>Find in events (Ctrl+F)</source>
        <translation>In Ereignissen suchen (Strg+F)</translation>
    </message>
    <message>
        <source>Automatic actions</source>
        <translation>Automatische Aktionen</translation>
    </message>
    <message>
        <source>Choose what happens automatically when certain events arrive</source>
        <translation>Festlegen, was automatisch geschieht, wenn bestimmte Ereignisse eintreffen</translation>
    </message>
    <message>
        <source>Monitoring options</source>
        <translation>Überwachungsoptionen</translation>
    </message>
    <message>
        <source>Choose how events are shown, rated, kept and filtered</source>
        <translation>Festlegen, wie Ereignisse angezeigt, bewertet, aufbewahrt und gefiltert werden</translation>
    </message>
    <message>
        <source>Events, newest first</source>
        <translation>Ereignisse, neueste zuerst</translation>
    </message>
    <message>
        <source>Delete...</source>
        <translation>Löschen...</translation>
    </message>
    <message>
        <source>Delete events</source>
        <translation>Ereignisse löschen</translation>
    </message>
    <message>
        <source>Delete the selected events, or all of them, from the list and from the log files</source>
        <translation>Die ausgewählten oder alle Ereignisse aus der Liste und den Protokolldateien löschen</translation>
    </message>
    <message>
        <source>Export...</source>
        <translation>Exportieren...</translation>
    </message>
    <message>
        <source>Export events</source>
        <translation>Ereignisse exportieren</translation>
    </message>
    <message>
        <source>Write the selected events, or all of them, to a text file</source>
        <translation>Die ausgewählten oder alle Ereignisse in eine Textdatei schreiben</translation>
    </message>
    <message>
        <source>Send test message</source>
        <translation>Testmeldung senden</translation>
    </message>
    <message>
        <source>Send one syslog message to this computer, to check that events are received and shown</source>
        <translation>Eine Syslog-Meldung an diesen Computer senden, um zu prüfen, ob Ereignisse empfangen und angezeigt werden</translation>
    </message>
</context>
<context>
    <name>ScanViewEvent</name>
    <message>
        <source>Event details</source>
        <translation>Einzelheiten des Ereignisses</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>Host</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
    <message>
        <source>Previous event</source>
        <translation>Voriges Ereignis</translation>
    </message>
    <message>
        <source>Show the next event up the list (Alt+Up)</source>
        <translation>Das nächste Ereignis weiter oben zeigen (Alt+Aufwärts)</translation>
    </message>
    <message>
        <source>Next event</source>
        <translation>Nächstes Ereignis</translation>
    </message>
    <message>
        <source>Show the next event down the list (Alt+Down)</source>
        <translation>Das nächste Ereignis weiter unten zeigen (Alt+Abwärts)</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>ThresholdForm</name>
    <message>
        <source>Only after</source>
        <translation>Erst nach</translation>
    </message>
    <message>
        <source>Only after several matches</source>
        <translation>Erst nach mehreren Treffern</translation>
    </message>
    <message>
        <source>Let the action act only when several events have matched within some time</source>
        <translation>Die Aktion erst handeln lassen, wenn in einer bestimmten Zeit mehrere Ereignisse zutrafen</translation>
    </message>
    <message>
        <source>How many matches</source>
        <translation>Wie viele Treffer</translation>
    </message>
    <message>
        <source>1 to 1000 matches</source>
        <translation>1 bis 1000 Treffer</translation>
    </message>
    <message>
        <source>How many matches, stepper</source>
        <translation>Wie viele Treffer, Drehfeld</translation>
    </message>
    <message>
        <source>matches within</source>
        <translation>Treffern in</translation>
    </message>
    <message>
        <source>Within how many minutes</source>
        <translation>In wie vielen Minuten</translation>
    </message>
    <message>
        <source>1 to 1440 minutes, which is a day</source>
        <translation>1 bis 1440 Minuten, das ist ein Tag</translation>
    </message>
    <message>
        <source>Within how many minutes, stepper</source>
        <translation>In wie vielen Minuten, Drehfeld</translation>
    </message>
    <message>
        <source>minutes</source>
        <translation>Minuten</translation>
    </message>
    <message>
        <source>Of which hosts</source>
        <translation>Von welchen Hosts</translation>
    </message>
    <message>
        <source>Count the matches of all hosts together, or those of each host for itself</source>
        <translation>Die Treffer aller Hosts zusammen zählen oder die jedes Hosts für sich</translation>
    </message>
    <message>
        <source>in all</source>
        <translation>insgesamt</translation>
    </message>
    <message>
        <source>from one host</source>
        <translation>von einem Host</translation>
    </message>
</context>
<context>
    <name>ToolsView</name>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>Monitoring options</source>
        <translation>Überwachungsoptionen</translation>
    </message>
    <message>
        <source>Open monitoring options</source>
        <translation>Überwachungsoptionen öffnen</translation>
    </message>
    <message>
        <source>Choose how events are shown, rated and announced, how long they are kept, and which messages are accepted.</source>
        <translation>Festlegen, wie Ereignisse angezeigt, bewertet und angekündigt, wie lange sie aufbewahrt und welche Meldungen angenommen werden.</translation>
    </message>
    <message>
        <source>Automatic actions</source>
        <translation>Automatische Aktionen</translation>
    </message>
    <message>
        <source>Open automatic actions</source>
        <translation>Automatische Aktionen öffnen</translation>
    </message>
    <message>
        <source>Let the service run a command, send an e-mail or set an event of its own when certain events arrive.</source>
        <translation>Den Dienst einen Befehl ausführen, eine E-Mail senden oder selbst ein Ereignis setzen lassen, wenn bestimmte Ereignisse eintreffen.</translation>
    </message>
    <message>
        <source>Periodic export</source>
        <translation>Regelmäßiger Export</translation>
    </message>
    <message>
        <source>Open periodic export</source>
        <translation>Regelmäßigen Export öffnen</translation>
    </message>
    <message>
        <source>Let the service write the events to a text file or to a database file every few minutes.</source>
        <translation>Den Dienst die Ereignisse alle paar Minuten in eine Textdatei oder eine Datenbankdatei schreiben lassen.</translation>
    </message>
    <message>
        <source>Hosts</source>
        <translation>Hosts</translation>
    </message>
    <message>
        <source>Open the list of hosts</source>
        <translation>Die Liste der Hosts öffnen</translation>
    </message>
    <message>
        <source>See who sends how much and how often, since when, and who has fallen silent.</source>
        <translation>Sehen, wer wie viel und wie oft sendet, seit wann, und wer verstummt ist.</translation>
    </message>
</context>
<context>
    <name>ToolsViewActions</name>
    <message>
        <source>Actions</source>
        <translation>Aktionen</translation>
    </message>
    <message>
        <source>What the service does automatically when an event arrives.</source>
        <translation>Was der Dienst automatisch tut, wenn ein Ereignis eintrifft.</translation>
    </message>
    <message>
        <source>Add...</source>
        <translation>Hinzufügen...</translation>
    </message>
    <message>
        <source>Add an action</source>
        <translation>Eine Aktion hinzufügen</translation>
    </message>
    <message>
        <source>Edit...</source>
        <translation>Bearbeiten...</translation>
    </message>
    <message>
        <source>Edit the selected action</source>
        <translation>Die ausgewählte Aktion bearbeiten</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected action</source>
        <translation>Die ausgewählte Aktion entfernen</translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation>E-Mail</translation>
    </message>
    <message>
        <source>All actions share one mail server and one e-mail format.</source>
        <translation>Alle Aktionen nutzen denselben Mailserver und dasselbe E-Mail-Format.</translation>
    </message>
    <message>
        <source>Mail server</source>
        <translation>Mailserver</translation>
    </message>
    <message>
        <source>Choose the server that sends the e-mails</source>
        <translation>Den Server festlegen, der die E-Mails sendet</translation>
    </message>
    <message>
        <source>E-mail format</source>
        <translation>E-Mail-Format</translation>
    </message>
    <message>
        <source>Write the subject and the body of the e-mails</source>
        <translation>Betreff und Text der E-Mails schreiben</translation>
    </message>
    <message>
        <source>Test e-mail</source>
        <translation>Test-E-Mail</translation>
    </message>
    <message>
        <source>Send an e-mail about a sample event</source>
        <translation>Eine E-Mail über ein Beispielereignis senden</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>What came of the last test e-mail</source>
        <translation>Was aus der letzten Test-E-Mail wurde</translation>
    </message>
    <message>
        <source>What came of the actions</source>
        <translation>Was aus den Aktionen wurde</translation>
    </message>
</context>
<context>
    <name>ToolsViewExport</name>
    <message>
        <source>Export</source>
        <translation>Export</translation>
    </message>
    <message>
        <source>The service can export the stored events to files at regular intervals.</source>
        <translation>Der Dienst kann die gespeicherten Ereignisse regelmäßig in Dateien exportieren.</translation>
    </message>
    <message>
        <source>Export to a text file</source>
        <translation>In eine Textdatei exportieren</translation>
    </message>
    <message>
        <source>Fields are separated by tabs in a txt file, by commas in a csv file.</source>
        <translation>In einer txt-Datei trennen Tabulatoren die Felder, in einer csv-Datei Kommas.</translation>
    </message>
    <message>
        <source>Every</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Text export interval in minutes</source>
        <translation>Abstand des Textexports in Minuten</translation>
    </message>
    <message>
        <source>1 to 1440 minutes</source>
        <translation>1 bis 1440 Minuten</translation>
    </message>
    <message>
        <source>Text export interval, stepper</source>
        <translation>Abstand des Textexports, Drehfeld</translation>
    </message>
    <message>
        <source>minutes</source>
        <translation>Minuten</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Text export file</source>
        <translation>Datei des Textexports</translation>
    </message>
    <message>
        <source>The full path of the file</source>
        <translation>Der vollständige Pfad der Datei</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>Durchsuchen...</translation>
    </message>
    <message>
        <source>Browse for the text export file</source>
        <translation>Datei des Textexports auswählen</translation>
    </message>
    <message>
        <source>Export to a database file</source>
        <translation>In eine Datenbankdatei exportieren</translation>
    </message>
    <message>
        <source>An SQLite database with the extension db. It is only available together with the text export.</source>
        <translation>Eine SQLite-Datenbank mit der Endung db. Sie ist nur zusammen mit dem Textexport verfügbar.</translation>
    </message>
    <message>
        <source>Database export interval in minutes</source>
        <translation>Abstand des Datenbankexports in Minuten</translation>
    </message>
    <message>
        <source>Database export interval, stepper</source>
        <translation>Abstand des Datenbankexports, Drehfeld</translation>
    </message>
    <message>
        <source>Database export file</source>
        <translation>Datei des Datenbankexports</translation>
    </message>
    <message>
        <source>Browse for the database export file</source>
        <translation>Datei des Datenbankexports auswählen</translation>
    </message>
    <message>
        <source>The service writes these files itself. Choose a folder that its user, quorbel, may write to.</source>
        <translation>Der Dienst schreibt diese Dateien selbst. Wählen Sie einen Ordner, in den sein Benutzer, quorbel, schreiben darf.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
</context>
<context>
    <name>ToolsViewFilter</name>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Go back without saving</source>
        <translation>Zurück, ohne zu speichern</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Save the filter to the list</source>
        <translation>Den Filter in die Liste speichern</translation>
    </message>
</context>
<context>
    <name>ToolsViewOptions</name>
    <message>
        <source>Monitoring options</source>
        <translation>Überwachungsoptionen</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message>
        <source>Hosts and dates</source>
        <translation>Hosts und Datum</translation>
    </message>
    <message>
        <source>Hosts</source>
        <translation>Hosts</translation>
    </message>
    <message>
        <source>By IP address</source>
        <translation>Nach IP-Adresse</translation>
    </message>
    <message>
        <source>Show hosts by IP address</source>
        <translation>Hosts mit ihrer IP-Adresse zeigen</translation>
    </message>
    <message>
        <source>By name</source>
        <translation>Nach Name</translation>
    </message>
    <message>
        <source>Show hosts by name</source>
        <translation>Hosts mit ihrem Namen zeigen</translation>
    </message>
    <message>
        <source>The service looks names up as messages arrive; events that are already stored stay as they are</source>
        <translation>Der Dienst sucht die Namen beim Eintreffen der Meldungen; schon gespeicherte Ereignisse bleiben, wie sie sind</translation>
    </message>
    <message>
        <source>Dates</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Standard format</source>
        <translation>Standardformat</translation>
    </message>
    <message>
        <source>Show dates in the standard format</source>
        <translation>Datum im Standardformat zeigen</translation>
    </message>
    <message>
        <source>This format:</source>
        <translation>Dieses Format:</translation>
    </message>
    <message>
        <source>Show dates in a chosen format</source>
        <translation>Datum in einem gewählten Format zeigen</translation>
    </message>
    <message>
        <source>Format of the date</source>
        <translation>Format des Datums</translation>
    </message>
    <message>
        <source>y is the year, M the month, d the day</source>
        <translation>y ist das Jahr, M der Monat, d der Tag</translation>
    </message>
    <message>
        <source>Format of the time</source>
        <translation>Format der Uhrzeit</translation>
    </message>
    <message>
        <source>H is the hour on the 24-hour clock, h on the 12-hour clock, m the minute, s the second</source>
        <translation>H ist die Stunde von 0 bis 23, h die Stunde von 1 bis 12, m die Minute, s die Sekunde</translation>
    </message>
    <message>
        <source>Ratings</source>
        <translation>Bewertungen</translation>
    </message>
    <message>
        <source>How serious the events of each severity are. The home page rates the situation accordingly.</source>
        <translation>Wie ernst die Ereignisse jedes Schweregrads sind. Danach bewertet die Startseite die Lage.</translation>
    </message>
    <message>
        <source>Retention</source>
        <translation>Aufbewahrung</translation>
    </message>
    <message>
        <source>The service removes events of the ticked severities once they are older than this, and keeps all others.</source>
        <translation>Der Dienst entfernt Ereignisse der angekreuzten Schweregrade, sobald sie älter sind, und behält alle anderen.</translation>
    </message>
    <message>
        <source>Alerts</source>
        <translation>Alarme</translation>
    </message>
    <message>
        <source>Show a popup for new events of the severities ticked here</source>
        <translation>Bei neuen Ereignissen der angekreuzten Schweregrade ein Popup zeigen</translation>
    </message>
    <message>
        <source>One popup is shown at a time; the next one opens when it has closed</source>
        <translation>Es wird immer nur ein Popup gezeigt; das nächste öffnet sich, wenn es geschlossen ist</translation>
    </message>
    <message>
        <source>Close each after</source>
        <translation>Jedes schließen nach</translation>
    </message>
    <message>
        <source>Seconds until a popup closes</source>
        <translation>Sekunden, bis ein Popup sich schließt</translation>
    </message>
    <message>
        <source>1 to 3600 seconds</source>
        <translation>1 bis 3600 Sekunden</translation>
    </message>
    <message>
        <source>Seconds until a popup closes, stepper</source>
        <translation>Sekunden, bis ein Popup sich schließt, Drehfeld</translation>
    </message>
    <message>
        <source>seconds</source>
        <translation>Sekunden</translation>
    </message>
    <message>
        <source>Sound</source>
        <translation>Ton</translation>
    </message>
    <message>
        <source>Play a sound for new events of the severities ticked here</source>
        <translation>Bei neuen Ereignissen der angekreuzten Schweregrade einen Ton abspielen</translation>
    </message>
    <message>
        <source>Sound file</source>
        <translation>Tondatei</translation>
    </message>
    <message>
        <source>The full path of an AIFF file, with the extension aif or aiff</source>
        <translation>Der vollständige Pfad einer AIFF-Datei mit der Endung aif oder aiff</translation>
    </message>
    <message>
        <source>An AIFF file (aif, aiff)</source>
        <translation>Eine AIFF-Datei (aif, aiff)</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>Durchsuchen...</translation>
    </message>
    <message>
        <source>Choose the sound file</source>
        <translation>Die Tondatei auswählen</translation>
    </message>
    <message>
        <source>Include filters</source>
        <translation>Einschlussfilter</translation>
    </message>
    <message>
        <source>Only messages that match one of these are accepted. If there are none, all messages are.</source>
        <translation>Nur Meldungen, auf die einer davon zutrifft, werden angenommen. Gibt es keinen, sind es alle.</translation>
    </message>
    <message>
        <source>Add...</source>
        <translation>Hinzufügen...</translation>
    </message>
    <message>
        <source>Add an include filter</source>
        <translation>Einen Einschlussfilter hinzufügen</translation>
    </message>
    <message>
        <source>Create a new include filter</source>
        <translation>Einen neuen Einschlussfilter anlegen</translation>
    </message>
    <message>
        <source>Edit...</source>
        <translation>Bearbeiten...</translation>
    </message>
    <message>
        <source>Edit the selected include filter</source>
        <translation>Den ausgewählten Einschlussfilter bearbeiten</translation>
    </message>
    <message>
        <source>Change the selected filter (double click)</source>
        <translation>Den ausgewählten Filter ändern (Doppelklick)</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected include filter</source>
        <translation>Den ausgewählten Einschlussfilter entfernen</translation>
    </message>
    <message>
        <source>Remove the selected filter from the list</source>
        <translation>Den ausgewählten Filter aus der Liste entfernen</translation>
    </message>
    <message>
        <source>Exclude filters</source>
        <translation>Ausschlussfilter</translation>
    </message>
    <message>
        <source>Messages that match one of these are left out, even if they match an include filter.</source>
        <translation>Meldungen, auf die einer davon zutrifft, werden ausgelassen, auch wenn ein Einschlussfilter zutrifft.</translation>
    </message>
    <message>
        <source>Add an exclude filter</source>
        <translation>Einen Ausschlussfilter hinzufügen</translation>
    </message>
    <message>
        <source>Create a new exclude filter</source>
        <translation>Einen neuen Ausschlussfilter anlegen</translation>
    </message>
    <message>
        <source>Edit the selected exclude filter</source>
        <translation>Den ausgewählten Ausschlussfilter bearbeiten</translation>
    </message>
    <message>
        <source>Remove the selected exclude filter</source>
        <translation>Den ausgewählten Ausschlussfilter entfernen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Go back without saving</source>
        <translation>Zurück, ohne zu speichern</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Send all options to the service and go back (Ctrl+S)</source>
        <translation>Alle Optionen an den Dienst senden und zurück (Strg+S)</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Play the sound file</source>
        <translation>Die Tondatei abspielen</translation>
    </message>
    <message>
        <source>Hear the chosen sound now</source>
        <translation>Den gewählten Ton jetzt hören</translation>
    </message>
</context>
<context>
    <name>WindowController</name>
    <message>
        <source>Navigation</source>
        <translation>Navigation</translation>
    </message>
    <message>
        <source>Home</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>The situation at a glance</source>
        <translation>Die Lage auf einen Blick</translation>
    </message>
    <message>
        <source>Events</source>
        <translation>Ereignisse</translation>
    </message>
    <message>
        <source>The events received, newest first</source>
        <translation>Die empfangenen Ereignisse, neueste zuerst</translation>
    </message>
    <message>
        <source>Reports</source>
        <translation>Berichte</translation>
    </message>
    <message>
        <source>Events grouped by host, message, priority or date</source>
        <translation>Ereignisse nach Host, Meldung, Priorität oder Datum gruppiert</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>Options, actions and export</source>
        <translation>Optionen, Aktionen und Export</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Help and version</source>
        <translation>Hilfe und Version</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Go</source>
        <translation>&amp;Gehe zu</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Close Window</source>
        <translation>Fenster &amp;schließen</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Home</source>
        <translation>&amp;Start</translation>
    </message>
    <message>
        <source>&amp;Events</source>
        <translation>&amp;Ereignisse</translation>
    </message>
    <message>
        <source>&amp;Reports</source>
        <translation>Be&amp;richte</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>&amp;Werkzeuge</translation>
    </message>
    <message>
        <source>Quorbel Help...</source>
        <translation>Quorbel-Hilfe...</translation>
    </message>
    <message>
        <source>About Quorbel...</source>
        <translation>Über Quorbel...</translation>
    </message>
</context>
<context>
    <name>quorbel::AboutView</name>
    <message>
        <source>Quorbel Version: %1</source>
        <translation>Quorbel-Version: %1</translation>
    </message>
    <message>
        <source>LIMITED WARRANTY
---------------------
THIS PROGRAM AND THE WRITTEN MATERIALS THAT COME WITH IT ARE PROVIDED &quot;AS IS&quot;, WITHOUT WARRANTY OF ANY KIND, EXPRESS OR IMPLIED, INCLUDING THE WARRANTIES OF MERCHANTABILITY AND OF FITNESS FOR A PARTICULAR PURPOSE. YOU BEAR THE ENTIRE RISK OF ITS USE. NOBODY WHO TOOK PART IN MAKING, TESTING OR DELIVERING IT IS LIABLE FOR ANY DAMAGE THAT ARISES FROM USING IT OR FROM BEING UNABLE TO USE IT, LOST PROFIT, LOST DATA AND INTERRUPTED BUSINESS INCLUDED, EVEN IF THE POSSIBILITY OF SUCH DAMAGE WAS KNOWN.</source>
        <translation>EINGESCHRÄNKTE GEWÄHRLEISTUNG
---------------------
DIESES PROGRAMM UND DAS ZUGEHÖRIGE SCHRIFTLICHE MATERIAL WERDEN „WIE BESEHEN“ BEREITGESTELLT, OHNE JEDE GEWÄHRLEISTUNG, WEDER AUSDRÜCKLICH NOCH STILLSCHWEIGEND, EINSCHLIESSLICH DER GEWÄHRLEISTUNG DER MARKTGÄNGIGKEIT UND DER EIGNUNG FÜR EINEN BESTIMMTEN ZWECK. DAS GESAMTE RISIKO DER NUTZUNG TRAGEN SIE. NIEMAND, DER AN HERSTELLUNG, PRÜFUNG ODER LIEFERUNG BETEILIGT WAR, HAFTET FÜR SCHÄDEN, DIE AUS DER NUTZUNG ODER DER UNMÖGLICHKEIT DER NUTZUNG ENTSTEHEN, EINSCHLIESSLICH ENTGANGENEN GEWINNS, VERLORENER DATEN UND UNTERBROCHENER GESCHÄFTSTÄTIGKEIT, SELBST WENN DIE MÖGLICHKEIT SOLCHER SCHÄDEN BEKANNT WAR.</translation>
    </message>
    <message>
        <source>Warning: This software is protected by copyright law and international treaties. Reproducing or distributing it, or any part of it, without permission may be punished under civil and criminal law, and will be prosecuted to the full extent that the law allows.</source>
        <translation>Warnung: Diese Software ist durch das Urheberrecht und internationale Verträge geschützt. Ihre unerlaubte Vervielfältigung oder Verbreitung, ganz oder in Teilen, kann zivil- und strafrechtlich geahndet werden und wird im größtmöglichen gesetzlichen Umfang verfolgt.</translation>
    </message>
</context>
<context>
    <name>quorbel::ActionCommandEmail</name>
    <message>
        <source>Quorbel E-mail</source>
        <translation>Quorbel-E-Mail</translation>
    </message>
</context>
<context>
    <name>quorbel::ActionCommandEvent</name>
    <message>
        <source>Quorbel Event</source>
        <translation>Quorbel-Ereignis</translation>
    </message>
</context>
<context>
    <name>quorbel::ActionCommandRun</name>
    <message>
        <source>Quorbel Command</source>
        <translation>Quorbel-Befehl</translation>
    </message>
    <message>
        <source>Please select command file path:</source>
        <translation>Bitte wählen Sie den Pfad der Befehlsdatei:</translation>
    </message>
</context>
<context>
    <name>quorbel::ActionResults</name>
    <message>
        <source>Action</source>
        <translation>Aktion</translation>
    </message>
    <message>
        <source>Carried Out</source>
        <translation>Ausgeführt</translation>
    </message>
    <message>
        <source>Last</source>
        <translation>Zuletzt</translation>
    </message>
    <message>
        <source>Last Problem</source>
        <translation>Letztes Problem</translation>
    </message>
    <message>
        <source>Since the service started at %1, or since the action was changed last</source>
        <translation>Seit der Dienst gestartet ist (%1) oder die Aktion zuletzt geändert wurde</translation>
    </message>
    <message>
        <source>has nothing to do</source>
        <translation>hat nichts zu tun</translation>
    </message>
    <message>
        <source>cannot be told</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>the service does not have it so</source>
        <translation>der Dienst hat sie nicht so</translation>
    </message>
    <message>
        <source>never</source>
        <translation>nie</translation>
    </message>
    <message numerus="yes">
        <source>%1 times</source>
        <translation>
            <numerusform>%1-mal</numerusform>
            <numerusform>%1-mal</numerusform>
        </translation>
    </message>
    <message>
        <source>once</source>
        <translation>einmal</translation>
    </message>
</context>
<context>
    <name>quorbel::ActionView</name>
    <message>
        <source>Quorbel Action</source>
        <translation>Quorbel-Aktion</translation>
    </message>
</context>
<context>
    <name>quorbel::ActionsEmailFormat</name>
    <message>
        <source>Quorbel E-mail Format</source>
        <translation>Quorbel-E-Mail-Format</translation>
    </message>
</context>
<context>
    <name>quorbel::ActionsEmailServer</name>
    <message>
        <source>Quorbel E-mail Server</source>
        <translation>Quorbel-E-Mail-Server</translation>
    </message>
</context>
<context>
    <name>quorbel::ActionsEmailTest</name>
    <message>
        <source>Quorbel Test E-mail</source>
        <translation>Quorbel-Test-E-Mail</translation>
    </message>
</context>
<context>
    <name>quorbel::AlertBox</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>quorbel::ChartLegend</name>
    <message>
        <source>No events yet</source>
        <translation>Noch keine Ereignisse</translation>
    </message>
    <message>
        <source>last 24 h</source>
        <translation>letzte 24 h</translation>
    </message>
    <message>
        <source>day before</source>
        <translation>Tag davor</translation>
    </message>
    <message>
        <source>last 24 hours</source>
        <translation>letzte 24 Stunden</translation>
    </message>
    <message>
        <source>the day before</source>
        <translation>der Tag davor</translation>
    </message>
    <message>
        <source>midnight</source>
        <translation>Mitternacht</translation>
    </message>
    <message>
        <source>Charts: %1</source>
        <translation>Diagramme: %1</translation>
    </message>
    <message>
        <source>Columns: the hours of the last day. Outline: the same hours the day before.
The height is the square root of the count, on a scale of each card&apos;s own.</source>
        <translation>Säulen: die Stunden des letzten Tages. Umriss: dieselben Stunden am Tag davor.
Die Höhe ist die Quadratwurzel der Anzahl, in einem eigenen Maßstab je Karte.</translation>
    </message>
</context>
<context>
    <name>quorbel::ContentArea</name>
    <message>
        <source>Content</source>
        <translation>Inhalt</translation>
    </message>
</context>
<context>
    <name>quorbel::DeletedEvents</name>
    <message>
        <source>&amp;Undo Delete</source>
        <translation>Löschen &amp;rückgängig machen</translation>
    </message>
    <message>
        <source>The service did not answer</source>
        <translation>Der Dienst hat nicht geantwortet</translation>
    </message>
    <message numerus="yes">
        <source>No log file can hold %1 of them, which lack a time or a text</source>
        <translation>
            <numerusform>%1 davon kann in keiner Protokolldatei stehen, weil Zeit oder Text fehlen</numerusform>
            <numerusform>%1 davon können in keiner Protokolldatei stehen, weil Zeit oder Text fehlen</numerusform>
        </translation>
    </message>
    <message>
        <source>The deleted events are listed again, but may be missing from the log.</source>
        <translation>Die gelöschten Ereignisse stehen wieder in der Liste, fehlen aber vielleicht im Protokoll.</translation>
    </message>
    <message>
        <source>%1.

What is not in the log will not be listed after the next start.</source>
        <translation>%1.

Was nicht im Protokoll steht, fehlt nach dem nächsten Start in der Liste.</translation>
    </message>
</context>
<context>
    <name>quorbel::EmailTestAnswer</name>
    <message>
        <source>Test e-mail: waiting for the answer...</source>
        <translation>Test-E-Mail: wartet auf die Antwort...</translation>
    </message>
    <message>
        <source>Test e-mail: waiting for the answer for %1 s...</source>
        <translation>Test-E-Mail: wartet seit %1 s auf die Antwort...</translation>
    </message>
    <message>
        <source>No answer yet; the journal of the service tells what comes</source>
        <translation>Noch keine Antwort; das Journal des Dienstes sagt, was daraus wird</translation>
    </message>
    <message>
        <source>No answer: the service does not run, or you may not send commands to it</source>
        <translation>Keine Antwort: Der Dienst läuft nicht, oder Sie dürfen ihm keine Befehle senden</translation>
    </message>
    <message>
        <source>The mail server has taken it</source>
        <translation>Der Mailserver hat sie angenommen</translation>
    </message>
    <message>
        <source>Test e-mail, %1: %2</source>
        <translation>Test-E-Mail, %1: %2</translation>
    </message>
    <message>
        <source>No test e-mail was sent yet</source>
        <translation>Es wurde noch keine Test-E-Mail gesendet</translation>
    </message>
</context>
<context>
    <name>quorbel::EventCommands</name>
    <message>
        <source>Only This &amp;Host</source>
        <translation>Nur dieser &amp;Host</translation>
    </message>
    <message>
        <source>&amp;Not This Host</source>
        <translation>Dieser Host &amp;nicht</translation>
    </message>
    <message>
        <source>Only &amp;Like This</source>
        <translation>Nur ähnl&amp;iche</translation>
    </message>
    <message>
        <source>&amp;Show Surroundings</source>
        <translation>&amp;Umgebung zeigen</translation>
    </message>
    <message>
        <source>&amp;Exclude Messages Like This...</source>
        <translation>Ähnliche Meldungen &amp;ausschließen...</translation>
    </message>
    <message>
        <source>&amp;Automatic Action...</source>
        <translation>Automatische Ak&amp;tion...</translation>
    </message>
    <message>
        <source>De&amp;tails</source>
        <translation>&amp;Einzelheiten</translation>
    </message>
    <message>
        <source>&amp;Delete...</source>
        <translation>&amp;Löschen...</translation>
    </message>
    <message>
        <source>&amp;Find...</source>
        <translation>&amp;Suchen...</translation>
    </message>
    <message>
        <source>&amp;Questions...</source>
        <translation>&amp;Fragen...</translation>
    </message>
    <message>
        <source>&amp;Clear the Filter</source>
        <translation>Filter auf&amp;heben</translation>
    </message>
    <message>
        <source>&amp;Hold New Events</source>
        <translation>Neue Ereignisse &amp;anhalten</translation>
    </message>
    <message>
        <source>&amp;Timeline</source>
        <translation>&amp;Zeitleiste</translation>
    </message>
    <message>
        <source>Go to the &amp;Newest</source>
        <translation>Zu den &amp;neuesten</translation>
    </message>
</context>
<context>
    <name>quorbel::EventFinder</name>
    <message>
        <source>Only the 1 event that matches is deleted.</source>
        <translation>Gelöscht wird nur das eine zutreffende Ereignis.</translation>
    </message>
    <message numerus="yes">
        <source>Only the %1 events that match are deleted.</source>
        <translation>
            <numerusform>Gelöscht wird nur %1 zutreffendes Ereignis.</numerusform>
            <numerusform>Gelöscht werden nur die %1 zutreffenden Ereignisse.</numerusform>
        </translation>
    </message>
    <message>
        <source>No events match.</source>
        <translation>Kein Ereignis trifft zu.</translation>
    </message>
</context>
<context>
    <name>quorbel::EventSpan</name>
    <message>
        <source>Last hour</source>
        <translation>Letzte Stunde</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Yesterday</source>
        <translation>Gestern</translation>
    </message>
    <message>
        <source>Last 24 hours</source>
        <translation>Letzte 24 Stunden</translation>
    </message>
</context>
<context>
    <name>quorbel::EventTableModel</name>
    <message>
        <source>Rating</source>
        <translation>Bewertung</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>Host</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
</context>
<context>
    <name>quorbel::EventTableView</name>
    <message>
        <source>No events yet.
Point the syslog output of your devices at this machine, and they appear here within a second.</source>
        <translation>Noch keine Ereignisse.
Richten Sie die Syslog-Ausgabe Ihrer Geräte auf diesen Computer, dann erscheinen sie hier binnen einer Sekunde.</translation>
    </message>
</context>
<context>
    <name>quorbel::EventsText</name>
    <message>
        <source>1 event</source>
        <translation>1 Ereignis</translation>
    </message>
    <message numerus="yes">
        <source>%1 events</source>
        <translation>
            <numerusform>%1 Ereignis</numerusform>
            <numerusform>%1 Ereignisse</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 of 1 event</source>
        <translation>%1 von 1 Ereignis</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %2 events</source>
        <translation>
            <numerusform>%1 von %2 Ereignis</numerusform>
            <numerusform>%1 von %2 Ereignissen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quorbel::ExportResult</name>
    <message>
        <source>What came of it cannot be told: %1</source>
        <translation>Was daraus wurde, ist unbekannt: %1</translation>
    </message>
    <message>
        <source>The service does not write it now</source>
        <translation>Der Dienst schreibt sie zurzeit nicht</translation>
    </message>
    <message>
        <source>Never written since the service started at %1</source>
        <translation>Nicht geschrieben, seit der Dienst gestartet ist (%1)</translation>
    </message>
    <message numerus="yes">
        <source>Written last at %1, %2 times since the service started at %3</source>
        <translation>
            <numerusform>Zuletzt geschrieben: %1, %2-mal, seit der Dienst gestartet ist (%3)</numerusform>
            <numerusform>Zuletzt geschrieben: %1, %2-mal, seit der Dienst gestartet ist (%3)</numerusform>
        </translation>
    </message>
    <message>
        <source>Last problem, at %1</source>
        <translation>Letztes Problem: %1</translation>
    </message>
    <message>
        <source>Written at %1, once since the service started at %2</source>
        <translation>Geschrieben: %1, einmal, seit der Dienst gestartet ist (%2)</translation>
    </message>
</context>
<context>
    <name>quorbel::FileIcons</name>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>%1 file</source>
        <translation>%1-Datei</translation>
    </message>
</context>
<context>
    <name>quorbel::FilePanel</name>
    <message>
        <source>Files (%1)</source>
        <translation>Dateien (%1)</translation>
    </message>
    <message>
        <source>The folder “%1” was not found.</source>
        <translation>Der Ordner „%1“ wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>Please check the name and try again.</source>
        <translation>Bitte prüfen Sie den Namen und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>“%1” was not found.</source>
        <translation>„%1“ wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>“%1” cannot be used here.</source>
        <translation>„%1“ ist hier nicht verwendbar.</translation>
    </message>
    <message>
        <source>Please choose a file with one of these extensions: %1.</source>
        <translation>Bitte wählen Sie eine Datei mit einer dieser Endungen: %1.</translation>
    </message>
    <message>
        <source>“%1” is a folder.</source>
        <translation>„%1“ ist ein Ordner.</translation>
    </message>
    <message>
        <source>Please choose another name.</source>
        <translation>Bitte wählen Sie einen anderen Namen.</translation>
    </message>
    <message>
        <source>“%1” already exists.</source>
        <translation>„%1“ gibt es bereits.</translation>
    </message>
    <message>
        <source>Replacing it will overwrite its current contents.</source>
        <translation>Beim Ersetzen wird der jetzige Inhalt überschrieben.</translation>
    </message>
    <message>
        <source>Replace</source>
        <translation>Ersetzen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>quorbel::FilterEffect</name>
    <message>
        <source>Counting…</source>
        <translation>Wird gezählt …</translation>
    </message>
    <message>
        <source>Nothing would arrive any more.</source>
        <translation>Es käme nichts mehr an.</translation>
    </message>
    <message>
        <source>Today: %1.</source>
        <translation>Heute: %1.</translation>
    </message>
    <message>
        <source>Perhaps, as only the host&apos;s name is known: %1.</source>
        <translation>Vielleicht, da nur der Name des Hosts bekannt ist: %1.</translation>
    </message>
    <message>
        <source>No events are listed yet.</source>
        <translation>Es sind noch keine Ereignisse gelistet.</translation>
    </message>
    <message>
        <source>It would have left out all %1 listed events.</source>
        <translation>Er hätte alle %1 gelisteten Ereignisse ausgelassen.</translation>
    </message>
    <message>
        <source>It would have accepted all %1 listed events.</source>
        <translation>Er hätte alle %1 gelisteten Ereignisse durchgelassen.</translation>
    </message>
    <message>
        <source>It would have matched all %1 listed events.</source>
        <translation>Sie hätte auf alle %1 gelisteten Ereignisse zugetroffen.</translation>
    </message>
    <message>
        <source>It would have left out %1 of %2 listed events.</source>
        <translation>Er hätte %1 von %2 gelisteten Ereignissen ausgelassen.</translation>
    </message>
    <message>
        <source>It would have accepted %1 of %2 listed events.</source>
        <translation>Er hätte %1 von %2 gelisteten Ereignissen durchgelassen.</translation>
    </message>
    <message>
        <source>It would have matched %1 of %2 listed events.</source>
        <translation>Sie hätte auf %1 von %2 gelisteten Ereignissen zugetroffen.</translation>
    </message>
</context>
<context>
    <name>quorbel::FilterForm</name>
    <message>
        <source>Any host: with a mask of 0, the address is ignored</source>
        <translation>Jeder Host: bei Maske 0 zählt die Adresse nicht</translation>
    </message>
    <message>
        <source>Any host; 192.168.1.0 / 24 is a whole network</source>
        <translation>Jeder Host; 192.168.1.0 / 24 ist ein Netz</translation>
    </message>
    <message>
        <source>Not a valid address: matches no host</source>
        <translation>Ungültige Adresse: trifft auf keinen Host zu</translation>
    </message>
    <message>
        <source>%1; the longest mask for this address is %2</source>
        <translation>%1; die längste Maske dieser Adresse ist %2</translation>
    </message>
    <message>
        <source>1 address</source>
        <translation>1 Adresse</translation>
    </message>
    <message numerus="yes">
        <source>%1 addresses</source>
        <translation>
            <numerusform>%1 Adresse</numerusform>
            <numerusform>%1 Adressen</numerusform>
        </translation>
    </message>
    <message>
        <source>Any host: only an address can be meant, not “%1”</source>
        <translation>Jeder Host: nur eine Adresse kann gemeint sein, nicht „%1“</translation>
    </message>
</context>
<context>
    <name>quorbel::FilterLibrary</name>
    <message>
        <source>No more than %1 texts can be kept together</source>
        <translation>Mehr als %1 Texte lassen sich nicht zusammen merken</translation>
    </message>
    <message>
        <source>This filter cannot be kept: %1</source>
        <translation>Dieser Filter lässt sich nicht merken: %1</translation>
    </message>
</context>
<context>
    <name>quorbel::FindBar</name>
    <message>
        <source>Find events</source>
        <translation>Ereignisse suchen</translation>
    </message>
    <message>
        <source>Clear the filter</source>
        <translation>Den Filter aufheben</translation>
    </message>
    <message>
        <source>Show all events again (Ctrl+Shift+L)</source>
        <translation>Wieder alle Ereignisse zeigen (Strg+Umschalt+L)</translation>
    </message>
    <message>
        <source>the ratings</source>
        <translation>die Bewertungen</translation>
    </message>
    <message>
        <source>This is no regular expression: %1</source>
        <translation>Das ist kein regulärer Ausdruck: %1</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Aufheben</translation>
    </message>
    <message>
        <source>This text is too long to be looked for</source>
        <translation>Dieser Text ist zu lang für die Suche</translation>
    </message>
</context>
<context>
    <name>quorbel::FindChip</name>
    <message>
        <source>not</source>
        <translation>nicht</translation>
    </message>
    <message>
        <source>Does not contain “%1”</source>
        <translation>Enthält nicht „%1“</translation>
    </message>
    <message>
        <source>Contains “%1”</source>
        <translation>Enthält „%1“</translation>
    </message>
    <message>
        <source>a regular expression</source>
        <translation>ein regulärer Ausdruck</translation>
    </message>
    <message>
        <source>capital letters matter</source>
        <translation>Groß- und Kleinschreibung zählt</translation>
    </message>
    <message>
        <source>Space turns it from “contains” to “does not contain” and back, Delete removes it</source>
        <translation>Die Leertaste macht aus „enthält“ „enthält nicht“ und umgekehrt, Entf entfernt es</translation>
    </message>
    <message>
        <source>Click to turn it round, click the cross to remove it</source>
        <translation>Klicken kehrt es um, ein Klick auf das Kreuz entfernt es</translation>
    </message>
    <message>
        <source>“%1”</source>
        <translation>„%1“</translation>
    </message>
</context>
<context>
    <name>quorbel::FindFacility</name>
    <message>
        <source>Facility</source>
        <translation>Facility</translation>
    </message>
    <message>
        <source>Show only events of one facility</source>
        <translation>Nur Ereignisse einer Facility zeigen</translation>
    </message>
    <message>
        <source>Any facility</source>
        <translation>Jede Facility</translation>
    </message>
</context>
<context>
    <name>quorbel::FindField</name>
    <message>
        <source>Find in events</source>
        <translation>In Ereignissen suchen</translation>
    </message>
    <message>
        <source>Show only events that contain a text (Ctrl+F); Return adds another</source>
        <translation>Nur Ereignisse zeigen, die einen Text enthalten (Strg+F); Eingabe fügt einen weiteren hinzu</translation>
    </message>
    <message>
        <source>Match case</source>
        <translation>Groß-/Kleinschreibung</translation>
    </message>
    <message>
        <source>Tell capital from small letters</source>
        <translation>Groß- und Kleinbuchstaben unterscheiden</translation>
    </message>
    <message>
        <source>Regular expression</source>
        <translation>Regulärer Ausdruck</translation>
    </message>
    <message>
        <source>Take the text as a regular expression</source>
        <translation>Den Text als regulären Ausdruck verstehen</translation>
    </message>
    <message>
        <source>Conditions: %1</source>
        <translation>Bedingungen: %1</translation>
    </message>
    <message>
        <source>and ...</source>
        <translation>und ...</translation>
    </message>
    <message>
        <source>Conditions</source>
        <translation>Bedingungen</translation>
    </message>
    <message>
        <source>&amp;Contains</source>
        <translation>&amp;Enthält</translation>
    </message>
    <message>
        <source>Does Not &amp;Contain</source>
        <translation>&amp;Enthält nicht</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>E&amp;ntfernen</translation>
    </message>
</context>
<context>
    <name>quorbel::FindHost</name>
    <message>
        <source>* is any text, ? one character; 10.0.0.0/8 a network; &quot;a*&quot; that name; ! excludes; commas separate several</source>
        <translation>* ist beliebiger Text, ? ein Zeichen; 10.0.0.0/8 ein Netz; &quot;a*&quot; dieser Name; ! schließt aus; Kommas trennen mehrere</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>Host</translation>
    </message>
    <message>
        <source>Show only events of certain hosts</source>
        <translation>Nur Ereignisse bestimmter Hosts zeigen</translation>
    </message>
    <message>
        <source>Any host</source>
        <translation>Jeder Host</translation>
    </message>
    <message>
        <source>Hosts of the listed events</source>
        <translation>Hosts der Ereignisse in der Liste</translation>
    </message>
    <message>
        <source>This is no network: %1</source>
        <translation>Das ist kein Netz: %1</translation>
    </message>
</context>
<context>
    <name>quorbel::FindMore</name>
    <message>
        <source>More conditions</source>
        <translation>Weitere Bedingungen</translation>
    </message>
    <message>
        <source>Conditions, %1 in use</source>
        <translation>Bedingungen, %1 in Gebrauch</translation>
    </message>
    <message>
        <source>Conditions</source>
        <translation>Bedingungen</translation>
    </message>
    <message>
        <source>Rating, severity, facility, host and time</source>
        <translation>Bewertung, Schweregrad, Facility, Host und Zeit</translation>
    </message>
</context>
<context>
    <name>quorbel::FindRatings</name>
    <message>
        <source>Ratings</source>
        <translation>Bewertungen</translation>
    </message>
    <message>
        <source>Show only the events rated %1: %2</source>
        <translation>Nur Ereignisse mit der Bewertung %1 zeigen: %2</translation>
    </message>
</context>
<context>
    <name>quorbel::FindSaved</name>
    <message>
        <source>Questions</source>
        <translation>Fragen</translation>
    </message>
    <message>
        <source>Choose a kept filter or a ready-made question (Ctrl+L)</source>
        <translation>Einen gemerkten Filter oder eine fertige Frage wählen (Strg+L)</translation>
    </message>
    <message>
        <source>Import filters</source>
        <translation>Filter importieren</translation>
    </message>
    <message>
        <source>1 filter was added</source>
        <translation>1 Filter wurde hinzugefügt</translation>
    </message>
    <message numerus="yes">
        <source>%1 filters were added</source>
        <translation>
            <numerusform>%1 Filter wurde hinzugefügt</numerusform>
            <numerusform>%1 Filter wurden hinzugefügt</numerusform>
        </translation>
    </message>
    <message>
        <source>All filters of the file are kept already.</source>
        <translation>Alle Filter der Datei sind schon gemerkt.</translation>
    </message>
    <message>
        <source>Export the kept filters</source>
        <translation>Die gemerkten Filter exportieren</translation>
    </message>
    <message>
        <source>The kept filters stay as they are</source>
        <translation>Die gemerkten Filter bleiben, wie sie sind</translation>
    </message>
    <message>
        <source>Unnamed filter</source>
        <translation>Filter ohne Namen</translation>
    </message>
</context>
<context>
    <name>quorbel::FindSeverity</name>
    <message>
        <source>Severity</source>
        <translation>Schweregrad</translation>
    </message>
    <message>
        <source>Any severity</source>
        <translation>Jeder Schweregrad</translation>
    </message>
    <message>
        <source>%1 and worse</source>
        <translation>%1 und schwerer</translation>
    </message>
    <message>
        <source>Show only events at least as severe as you choose, or of one severity</source>
        <translation>Nur Ereignisse zeigen, die mindestens so schwer sind, wie Sie wählen, oder nur einen Schweregrad</translation>
    </message>
    <message>
        <source>Only %1</source>
        <translation>Nur %1</translation>
    </message>
</context>
<context>
    <name>quorbel::FindSpan</name>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Show only events of a span of time</source>
        <translation>Nur Ereignisse eines Zeitraums zeigen</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>To</source>
        <translation>Bis</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Zeigen</translation>
    </message>
    <message>
        <source>Any time</source>
        <translation>Jederzeit</translation>
    </message>
    <message>
        <source>From ... to ...</source>
        <translation>Von ... bis ...</translation>
    </message>
    <message>
        <source>Show the events from the first moment up to the second one</source>
        <translation>Die Ereignisse vom ersten bis vor den zweiten Zeitpunkt zeigen</translation>
    </message>
</context>
<context>
    <name>quorbel::HoldButton</name>
    <message>
        <source>1 new event</source>
        <translation>1 neues Ereignis</translation>
    </message>
    <message numerus="yes">
        <source>%1 new events</source>
        <translation>
            <numerusform>%1 neues Ereignis</numerusform>
            <numerusform>%1 neue Ereignisse</numerusform>
        </translation>
    </message>
    <message>
        <source>1 removal</source>
        <translation>1 Entfernung</translation>
    </message>
    <message numerus="yes">
        <source>%1 removals</source>
        <translation>
            <numerusform>%1 Entfernung</numerusform>
            <numerusform>%1 Entfernungen</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 new</source>
        <translation>%1 neu</translation>
    </message>
    <message>
        <source>%1 removed</source>
        <translation>%1 entfernt</translation>
    </message>
    <message>
        <source>Hold new events</source>
        <translation>Neue Ereignisse anhalten</translation>
    </message>
    <message>
        <source>Held</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>Held: %1</source>
        <translation>Angehalten: %1</translation>
    </message>
    <message>
        <source>%1 and %2</source>
        <translation>%1 und %2</translation>
    </message>
    <message>
        <source>Hold the list as it is while you read: new events wait</source>
        <translation>Die Liste anhalten, während Sie lesen: neue Ereignisse warten</translation>
    </message>
    <message>
        <source>The list is held; nothing new so far</source>
        <translation>Die Liste ist angehalten; bisher nichts Neues</translation>
    </message>
    <message>
        <source>The list is held; not in it yet: %1</source>
        <translation>Die Liste ist angehalten; noch nicht darin: %1</translation>
    </message>
    <message>
        <source>Not in the list yet: %1</source>
        <translation>Noch nicht in der Liste: %1</translation>
    </message>
</context>
<context>
    <name>quorbel::HomeView</name>
    <message>
        <source>Mac program %1</source>
        <translation>Mac-Programm %1</translation>
    </message>
    <message>
        <source>Running</source>
        <translation>Läuft</translation>
    </message>
    <message>
        <source>Stopped</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>Actions enabled</source>
        <translation>Aktionen aktiviert</translation>
    </message>
    <message>
        <source>Do not use actions</source>
        <translation>Keine Aktionen</translation>
    </message>
    <message>
        <source>Export enabled</source>
        <translation>Export aktiviert</translation>
    </message>
    <message>
        <source>Do not use export</source>
        <translation>Kein Export</translation>
    </message>
    <message>
        <source>No unwanted or harmful events detected.</source>
        <translation>Keine unerwünschten oder schädlichen Ereignisse erkannt.</translation>
    </message>
    <message>
        <source>Review potentialy unwanted events.</source>
        <translation>Prüfen Sie möglicherweise unerwünschte Ereignisse.</translation>
    </message>
    <message>
        <source>Review harmful or potentialy unwanted events.</source>
        <translation>Prüfen Sie schädliche oder möglicherweise unerwünschte Ereignisse.</translation>
    </message>
</context>
<context>
    <name>quorbel::HostBoxes</name>
    <message>
        <source>Cannot be told</source>
        <translation>Lässt sich nicht sagen</translation>
    </message>
    <message>
        <source>not connected</source>
        <translation>nicht verbunden</translation>
    </message>
    <message>
        <source>No events yet</source>
        <translation>Noch keine Ereignisse</translation>
    </message>
    <message>
        <source>Nothing from any host</source>
        <translation>Von keinem Host etwas</translation>
    </message>
    <message>
        <source>1 other on time</source>
        <translation>1 anderer pünktlich</translation>
    </message>
    <message numerus="yes">
        <source>%1 others on time</source>
        <translation>
            <numerusform>%1 andere pünktlich</numerusform>
            <numerusform>%1 andere pünktlich</numerusform>
        </translation>
    </message>
    <message>
        <source>No host is overdue</source>
        <translation>Kein Host ist überfällig</translation>
    </message>
    <message>
        <source>1 sends regularly</source>
        <translation>1 sendet regelmäßig</translation>
    </message>
    <message numerus="yes">
        <source>%1 send regularly</source>
        <translation>
            <numerusform>%1 senden regelmäßig</numerusform>
            <numerusform>%1 senden regelmäßig</numerusform>
        </translation>
    </message>
    <message>
        <source>Learning the habits</source>
        <translation>Lernt die Gewohnheiten</translation>
    </message>
    <message>
        <source>tells from %1 on</source>
        <translation>sagt es ab %1</translation>
    </message>
    <message>
        <source>d MMM</source>
        <comment>date pattern</comment>
        <translation>d. MMM</translation>
    </message>
    <message>
        <source>Nobody is expected</source>
        <translation>Niemand wird erwartet</translation>
    </message>
    <message>
        <source>no host sends regularly</source>
        <translation>kein Host sendet regelmäßig</translation>
    </message>
    <message>
        <source>No events in the last 24 hours</source>
        <translation>Keine Ereignisse in den letzten 24 Stunden</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>und %1 weitere</translation>
    </message>
    <message>
        <source>Loudest</source>
        <translation>Am lautesten</translation>
    </message>
</context>
<context>
    <name>quorbel::HostTableModel</name>
    <message>
        <source>Host</source>
        <translation>Host</translation>
    </message>
    <message>
        <source>First seen</source>
        <translation>Zuerst gesehen</translation>
    </message>
    <message>
        <source>Last seen</source>
        <translation>Zuletzt gesehen</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Daily mean</source>
        <translation>Tagesmittel</translation>
    </message>
    <message>
        <source>Severe</source>
        <translation>Schwer</translation>
    </message>
    <message>
        <source>Usual gap</source>
        <translation>Üblicher Abstand</translation>
    </message>
    <message>
        <source>Silent for</source>
        <translation>Stumm seit</translation>
    </message>
    <message>
        <source>As the service reports it</source>
        <translation>Wie der Dienst ihn meldet</translation>
    </message>
    <message>
        <source>The oldest event that the log held when the window was started</source>
        <translation>Das älteste Ereignis, das im Protokoll stand, als das Fenster gestartet wurde</translation>
    </message>
    <message>
        <source>The event that came last</source>
        <translation>Das Ereignis, das zuletzt kam</translation>
    </message>
    <message>
        <source>Events that came since midnight</source>
        <translation>Ereignisse, die seit Mitternacht kamen</translation>
    </message>
    <message>
        <source>Events a day, without today</source>
        <translation>Ereignisse pro Tag, ohne heute</translation>
    </message>
    <message>
        <source>Share of events that are rated severe</source>
        <translation>Anteil der Ereignisse, die als schwer bewertet sind</translation>
    </message>
    <message>
        <source>How often the host usually sends</source>
        <translation>Wie oft der Host gewöhnlich sendet</translation>
    </message>
    <message>
        <source>For how long nothing has come</source>
        <translation>Wie lange nichts gekommen ist</translation>
    </message>
    <message>
        <source>not expected</source>
        <translation>nicht erwartet</translation>
    </message>
    <message>
        <source>learning</source>
        <translation>lernt noch</translation>
    </message>
    <message>
        <source>irregular</source>
        <translation>unregelmäßig</translation>
    </message>
    <message>
        <source>%1, overdue</source>
        <translation>%1, überfällig</translation>
    </message>
</context>
<context>
    <name>quorbel::HostsView</name>
    <message>
        <source>No host has sent anything yet.</source>
        <translation>Noch hat kein Host etwas gesendet.</translation>
    </message>
    <message>
        <source>Copy &amp;Name</source>
        <translation>&amp;Namen kopieren</translation>
    </message>
    <message>
        <source>Show &amp;Events</source>
        <translation>&amp;Ereignisse zeigen</translation>
    </message>
    <message>
        <source>1 host</source>
        <translation>1 Host</translation>
    </message>
    <message numerus="yes">
        <source>%1 hosts</source>
        <translation>
            <numerusform>%1 Hosts</numerusform>
            <numerusform>%1 Hosts</numerusform>
        </translation>
    </message>
    <message>
        <source>%1, %2 overdue</source>
        <comment>after the number of hosts</comment>
        <translation>%1, %2 überfällig</translation>
    </message>
    <message>
        <source>%1; there were more than can be told apart</source>
        <translation>%1; es waren mehr, als sich unterscheiden lassen</translation>
    </message>
    <message>
        <source>Expect again</source>
        <translation>Wieder erwarten</translation>
    </message>
    <message>
        <source>Stop expecting</source>
        <translation>Nicht mehr erwarten</translation>
    </message>
    <message>
        <source>Say again when it falls silent</source>
        <translation>Wieder sagen, wenn er verstummt</translation>
    </message>
    <message>
        <source>Say no more that it has fallen silent</source>
        <translation>Nicht mehr sagen, dass er verstummt ist</translation>
    </message>
</context>
<context>
    <name>quorbel::LongTextField</name>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
</context>
<context>
    <name>quorbel::LoudestHosts</name>
    <message>
        <source>%1: %2 events in 24 hours, the day before %3</source>
        <translation>%1: %2 Ereignisse in 24 Stunden, am Tag davor %3</translation>
    </message>
</context>
<context>
    <name>quorbel::NewestButton</name>
    <message>
        <source>%1 new</source>
        <translation>%1 neu</translation>
    </message>
    <message>
        <source>1 new event</source>
        <translation>1 neues Ereignis</translation>
    </message>
    <message numerus="yes">
        <source>%1 new events</source>
        <translation>
            <numerusform>%1 neues Ereignis</numerusform>
            <numerusform>%1 neue Ereignisse</numerusform>
        </translation>
    </message>
    <message>
        <source>Go to the newest: %1 above</source>
        <translation>Zu den neuesten: %1 weiter oben</translation>
    </message>
    <message>
        <source>%1 above; go to the newest (Ctrl+Home)</source>
        <translation>%1 weiter oben; zu den neuesten (Strg+Pos1)</translation>
    </message>
</context>
<context>
    <name>quorbel::NothingFound</name>
    <message>
        <source>No events match.</source>
        <translation>Kein Ereignis trifft zu.</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Aufheben</translation>
    </message>
    <message>
        <source>Clear the filter</source>
        <translation>Den Filter aufheben</translation>
    </message>
    <message>
        <source>Show all events again (Ctrl+Shift+L)</source>
        <translation>Wieder alle Ereignisse zeigen (Strg+Umschalt+L)</translation>
    </message>
    <message>
        <source>Without the costliest condition</source>
        <translation>Ohne die Bedingung, die am meisten kostet</translation>
    </message>
    <message>
        <source>Without %1: %2</source>
        <translation>Ohne %1: %2</translation>
    </message>
    <message numerus="yes">
        <source>Remove the condition %1: then %2 events match</source>
        <translation>
            <numerusform>Die Bedingung %1 entfernen: dann trifft %2 Ereignis zu</numerusform>
            <numerusform>Die Bedingung %1 entfernen: dann treffen %2 Ereignisse zu</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quorbel::PopupView</name>
    <message>
        <source>Learn more about this event...</source>
        <translation>Mehr über dieses Ereignis...</translation>
    </message>
    <message>
        <source>Severity: %1</source>
        <translation>Schweregrad: %1</translation>
    </message>
    <message>
        <source>Date:</source>
        <translation>Datum:</translation>
    </message>
    <message>
        <source>Priority:</source>
        <translation>Priorität:</translation>
    </message>
    <message>
        <source>Host:</source>
        <translation>Host:</translation>
    </message>
    <message>
        <source>Message:</source>
        <translation>Meldung:</translation>
    </message>
    <message>
        <source>Date: %1</source>
        <translation>Datum: %1</translation>
    </message>
    <message>
        <source>dddd d MMM, HH:mm</source>
        <translation>dddd, d. MMM, HH:mm</translation>
    </message>
    <message>
        <source>d MMM yyyy, HH:mm</source>
        <translation>d. MMM yyyy, HH:mm</translation>
    </message>
    <message numerus="yes">
        <source>%1 more</source>
        <translation>
            <numerusform>%1 weiterer</numerusform>
            <numerusform>%1 weitere</numerusform>
        </translation>
    </message>
    <message>
        <source>Waiting alerts: %1</source>
        <translation>Wartende Alarme: %1</translation>
    </message>
    <message>
        <source>ddd d MMM, HH:mm</source>
        <translation>ddd d. MMM, HH:mm</translation>
    </message>
    <message>
        <source>d MMM, HH:mm</source>
        <translation>d. MMM, HH:mm</translation>
    </message>
    <message>
        <source>HH:mm</source>
        <translation>HH:mm</translation>
    </message>
    <message>
        <source>d MMM yyyy</source>
        <translation>d. MMM yyyy</translation>
    </message>
</context>
<context>
    <name>quorbel::PopupWindow</name>
    <message>
        <source>Quorbel Alert</source>
        <translation>Quorbel-Alarm</translation>
    </message>
</context>
<context>
    <name>quorbel::ProgressWindow</name>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>quorbel::QueryText</name>
    <message>
        <source>last hour</source>
        <translation>letzte Stunde</translation>
    </message>
    <message>
        <source>today</source>
        <translation>heute</translation>
    </message>
    <message>
        <source>yesterday</source>
        <translation>gestern</translation>
    </message>
    <message>
        <source>last 24 hours</source>
        <translation>letzte 24 Stunden</translation>
    </message>
    <message>
        <source>does not match %1</source>
        <translation>passt nicht auf %1</translation>
    </message>
    <message>
        <source>matches %1</source>
        <translation>passt auf %1</translation>
    </message>
    <message>
        <source>without “%1”</source>
        <translation>ohne „%1“</translation>
    </message>
    <message>
        <source>contains “%1”</source>
        <translation>enthält „%1“</translation>
    </message>
    <message>
        <source> or </source>
        <translation> oder </translation>
    </message>
    <message>
        <source>%1 and worse</source>
        <translation>%1 und schwerer</translation>
    </message>
    <message>
        <source>facility %1</source>
        <translation>Facility %1</translation>
    </message>
    <message>
        <source>host %1</source>
        <translation>Host %1</translation>
    </message>
    <message>
        <source>from %1</source>
        <translation>ab %1</translation>
    </message>
    <message>
        <source>before %1</source>
        <translation>vor %1</translation>
    </message>
    <message>
        <source>only %1</source>
        <translation>nur %1</translation>
    </message>
</context>
<context>
    <name>quorbel::QuestionFooter</name>
    <message>
        <source>Keep this filter...</source>
        <translation>Filter merken...</translation>
    </message>
    <message>
        <source>Mark in colour</source>
        <translation>Farbig markieren</translation>
    </message>
    <message>
        <source>Show only these</source>
        <translation>Nur diese zeigen</translation>
    </message>
    <message>
        <source>Keep what the page is filtered by under a name</source>
        <translation>Den jetzigen Filter der Seite unter einem Namen merken</translation>
    </message>
    <message>
        <source>More about kept filters</source>
        <translation>Mehr zu gemerkten Filtern</translation>
    </message>
    <message>
        <source>Mark the events among the others (Ctrl+Return)</source>
        <translation>Die Ereignisse unter den anderen markieren (Strg+Eingabe)</translation>
    </message>
    <message>
        <source>Show all again</source>
        <translation>Wieder alle zeigen</translation>
    </message>
    <message>
        <source>No colour</source>
        <translation>Keine Farbe</translation>
    </message>
    <message>
        <source>Rename...</source>
        <translation>Umbenennen...</translation>
    </message>
    <message>
        <source>Delete...</source>
        <translation>Löschen...</translation>
    </message>
    <message>
        <source>Import from a file...</source>
        <translation>Aus einer Datei importieren...</translation>
    </message>
    <message>
        <source>Export the kept filters...</source>
        <translation>Gemerkte Filter exportieren...</translation>
    </message>
</context>
<context>
    <name>quorbel::QuestionModel</name>
    <message>
        <source>marks rows</source>
        <translation>markiert Zeilen</translation>
    </message>
    <message>
        <source>Kept filters</source>
        <translation>Gemerkte Filter</translation>
    </message>
    <message>
        <source>No filter or question has these words.</source>
        <translation>Kein Filter und keine Frage enthält diese Wörter.</translation>
    </message>
    <message>
        <source>events</source>
        <translation>Ereignisse</translation>
    </message>
    <message>
        <source>%1, marks rows, still counting its events</source>
        <translation>%1, markiert Zeilen, die Ereignisse werden noch gezählt</translation>
    </message>
    <message>
        <source>%1, still counting its events</source>
        <translation>%1, die Ereignisse werden noch gezählt</translation>
    </message>
    <message numerus="yes">
        <source>%1, marks rows, %2 events</source>
        <translation>
            <numerusform>%1, markiert Zeilen, %2 Ereignis</numerusform>
            <numerusform>%1, markiert Zeilen, %2 Ereignisse</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1, %2 events</source>
        <translation>
            <numerusform>%1, %2 Ereignis</numerusform>
            <numerusform>%1, %2 Ereignisse</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quorbel::QuestionPanel</name>
    <message>
        <source>Kept filters and questions</source>
        <translation>Gemerkte Filter und Fragen</translation>
    </message>
    <message>
        <source>Find a kept filter or a question</source>
        <translation>Einen gemerkten Filter oder eine Frage suchen</translation>
    </message>
    <message>
        <source>Find among %1 kept filters and %2 questions</source>
        <translation>Suchen (gemerkte Filter: %1, Fragen: %2)</translation>
    </message>
    <message>
        <source>Takes the place of the one of this name</source>
        <translation>Ersetzt den Filter dieses Namens</translation>
    </message>
    <message>
        <source>Keep the filter in use under a name</source>
        <translation>Den jetzigen Filter unter einem Namen merken</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Merken</translation>
    </message>
    <message>
        <source>Another name for the filter</source>
        <translation>Ein anderer Name für den Filter</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Delete the kept filter “%1”?</source>
        <translation>Den gemerkten Filter „%1“ löschen?</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Find among %1 kept filter and %2 questions</source>
        <translation>Suchen (gemerkte Filter: %1, Fragen: %2)</translation>
    </message>
</context>
<context>
    <name>quorbel::QuestionPrompt</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Name of the filter</source>
        <translation>Name des Filters</translation>
    </message>
</context>
<context>
    <name>quorbel::RecipientsList</name>
    <message>
        <source>Recipient</source>
        <translation>Empfänger</translation>
    </message>
    <message>
        <source>No recipients selected</source>
        <translation>Keine Empfänger ausgewählt</translation>
    </message>
    <message>
        <source>Please add recipients and try again.</source>
        <translation>Bitte fügen Sie Empfänger hinzu und versuchen Sie es noch einmal.</translation>
    </message>
</context>
<context>
    <name>quorbel::RecordTableModel</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>Host</translation>
    </message>
    <message>
        <source>Facility</source>
        <translation>Facility</translation>
    </message>
    <message>
        <source>Severity</source>
        <translation>Schweregrad</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
</context>
<context>
    <name>quorbel::RemovalEffect</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Saving removes 1 event now, for good.</source>
        <translation>Speichern entfernt jetzt 1 Ereignis endgültig.</translation>
    </message>
    <message numerus="yes">
        <source>Saving removes %1 events now, for good.</source>
        <translation>
            <numerusform>Speichern entfernt jetzt %1 Ereignis endgültig.</numerusform>
            <numerusform>Speichern entfernt jetzt %1 Ereignisse endgültig.</numerusform>
        </translation>
    </message>
    <message>
        <source>Counting…</source>
        <translation>Wird gezählt …</translation>
    </message>
    <message>
        <source>Saving removes none of the listed events now.</source>
        <translation>Speichern entfernt jetzt keines der gelisteten Ereignisse.</translation>
    </message>
    <message>
        <source>Not counted: the events that wait while the list is held.</source>
        <translation>Nicht gezählt: die Ereignisse, die warten, während die Liste angehalten ist.</translation>
    </message>
</context>
<context>
    <name>quorbel::ReportCounts</name>
    <message>
        <source>1 host</source>
        <translation>1 Host</translation>
    </message>
    <message numerus="yes">
        <source>%1 hosts</source>
        <translation>
            <numerusform>%1 Host</numerusform>
            <numerusform>%1 Hosts</numerusform>
        </translation>
    </message>
    <message>
        <source>1 message</source>
        <translation>1 Meldung</translation>
    </message>
    <message numerus="yes">
        <source>%1 messages</source>
        <translation>
            <numerusform>%1 Meldung</numerusform>
            <numerusform>%1 Meldungen</numerusform>
        </translation>
    </message>
    <message>
        <source>1 priority</source>
        <translation>1 Priorität</translation>
    </message>
    <message numerus="yes">
        <source>%1 priorities</source>
        <translation>
            <numerusform>%1 Priorität</numerusform>
            <numerusform>%1 Prioritäten</numerusform>
        </translation>
    </message>
    <message>
        <source>1 date</source>
        <translation>1 Datum</translation>
    </message>
    <message numerus="yes">
        <source>%1 dates</source>
        <translation>
            <numerusform>%1 Datum</numerusform>
            <numerusform>%1 Daten</numerusform>
        </translation>
    </message>
    <message>
        <source>1 event</source>
        <translation>1 Ereignis</translation>
    </message>
    <message numerus="yes">
        <source>%1 events</source>
        <translation>
            <numerusform>%1 Ereignis</numerusform>
            <numerusform>%1 Ereignisse</numerusform>
        </translation>
    </message>
    <message>
        <source>1 line read</source>
        <translation>1 Zeile gelesen</translation>
    </message>
    <message numerus="yes">
        <source>%1 lines read</source>
        <translation>
            <numerusform>%1 Zeile gelesen</numerusform>
            <numerusform>%1 Zeilen gelesen</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 skipped</source>
        <translation>%1 übersprungen</translation>
    </message>
</context>
<context>
    <name>quorbel::ReportPrinter</name>
    <message>
        <source>Page %1 of %2</source>
        <translation>Seite %1 von %2</translation>
    </message>
    <message>
        <source>%1 (continued)</source>
        <translation>%1 (Fortsetzung)</translation>
    </message>
</context>
<context>
    <name>quorbel::ReportPrinting</name>
    <message>
        <source>Please select a file to print to:</source>
        <translation>Bitte wählen Sie die Datei, in die gedruckt wird:</translation>
    </message>
    <message>
        <source>Number the pages, and repeat a group&apos;s name where it goes on</source>
        <translation>Seiten nummerieren und den Namen einer Gruppe wiederholen, wo sie weitergeht</translation>
    </message>
    <message>
        <source>&quot;Page 2 of 7&quot; in the margin, and the group at the top of each page that goes on with its events</source>
        <translation>„Seite 2 von 7“ am Rand, und die Gruppe am Anfang jeder Seite, auf der ihre Ereignisse weitergehen</translation>
    </message>
    <message>
        <source>Printing the report</source>
        <translation>Der Bericht wird gedruckt</translation>
    </message>
    <message>
        <source>Rows printed</source>
        <translation>Gedruckte Zeilen</translation>
    </message>
    <message>
        <source>No page was printed</source>
        <translation>Es wurde keine Seite gedruckt</translation>
    </message>
    <message>
        <source>The report has only one page.</source>
        <translation>Der Bericht hat nur eine Seite.</translation>
    </message>
    <message numerus="yes">
        <source>The report has %1 pages.</source>
        <translation>
            <numerusform>Der Bericht hat %1 Seite.</numerusform>
            <numerusform>Der Bericht hat %1 Seiten.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quorbel::ReportTableModel</name>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>Host</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
    <message>
        <source>&lt; 1 %</source>
        <translation>&lt; 1 %</translation>
    </message>
    <message>
        <source>&gt; 99 %</source>
        <translation>&gt; 99 %</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>%1, expanded, 1 event, %2</source>
        <translation>%1, aufgeklappt, 1 Ereignis, %2</translation>
    </message>
    <message>
        <source>%1, collapsed, 1 event, %2</source>
        <translation>%1, zugeklappt, 1 Ereignis, %2</translation>
    </message>
    <message numerus="yes">
        <source>%1, expanded, %2 events, %3</source>
        <translation>
            <numerusform>%1, aufgeklappt, %2 Ereignis, %3</numerusform>
            <numerusform>%1, aufgeklappt, %2 Ereignisse, %3</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1, collapsed, %2 events, %3</source>
        <translation>
            <numerusform>%1, zugeklappt, %2 Ereignis, %3</numerusform>
            <numerusform>%1, zugeklappt, %2 Ereignisse, %3</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quorbel::ReportsView</name>
    <message>
        <source>No report yet.
Choose what to group the events by and which log to read, then press Display.</source>
        <translation>Noch kein Bericht.
Wählen Sie, wonach die Ereignisse gruppiert werden und welches Protokoll gelesen wird, und drücken Sie Anzeigen.</translation>
    </message>
    <message>
        <source>All Logs</source>
        <translation>Alle Protokolle</translation>
    </message>
    <message>
        <source>Reading the log files</source>
        <translation>Die Protokolldateien werden gelesen</translation>
    </message>
    <message>
        <source>Bytes read</source>
        <translation>Gelesene Bytes</translation>
    </message>
    <message>
        <source>The report was cancelled.</source>
        <translation>Der Bericht wurde abgebrochen.</translation>
    </message>
    <message>
        <source>No events in the chosen log.</source>
        <translation>Keine Ereignisse im gewählten Protokoll.</translation>
    </message>
</context>
<context>
    <name>quorbel::ResultTexts</name>
    <message>
        <source>the service is being asked</source>
        <translation>der Dienst wird gefragt</translation>
    </message>
    <message>
        <source>the service that runs is too old to tell it</source>
        <translation>der laufende Dienst ist zu alt, um es zu sagen</translation>
    </message>
    <message>
        <source>you may not ask the service</source>
        <translation>Sie dürfen den Dienst nicht fragen</translation>
    </message>
    <message>
        <source>the service does not run</source>
        <translation>der Dienst läuft nicht</translation>
    </message>
    <message>
        <source>the service does not answer</source>
        <translation>der Dienst antwortet nicht</translation>
    </message>
</context>
<context>
    <name>quorbel::RowCommands</name>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Copy &amp;Message</source>
        <translation>&amp;Meldung kopieren</translation>
    </message>
    <message>
        <source>Commands</source>
        <translation>Befehle</translation>
    </message>
    <message>
        <source>Too much to copy</source>
        <translation>Zu viel zum Kopieren</translation>
    </message>
    <message>
        <source>Nothing was copied</source>
        <translation>Es wurde nichts kopiert</translation>
    </message>
    <message>
        <source>The selected rows are too long for the clipboard. Select fewer, or export them to a file.</source>
        <translation>Die ausgewählten Zeilen sind zu lang für die Zwischenablage. Wählen Sie weniger aus oder exportieren Sie sie in eine Datei.</translation>
    </message>
    <message>
        <source>The list changed while the selected rows were being copied. Please copy them again.</source>
        <translation>Die Liste hat sich beim Kopieren der ausgewählten Zeilen geändert. Bitte kopieren Sie sie noch einmal.</translation>
    </message>
</context>
<context>
    <name>quorbel::RowMarks</name>
    <message>
        <source>Marked by %1</source>
        <translation>Markiert von %1</translation>
    </message>
</context>
<context>
    <name>quorbel::ScanView</name>
    <message>
        <source>Are you sure you want to delete selected events?</source>
        <translation>Möchten Sie die ausgewählten Ereignisse wirklich löschen?</translation>
    </message>
    <message>
        <source>By clicking &apos;Yes&apos; you will permanently delete selected events.</source>
        <translation>Mit „Ja“ löschen Sie die ausgewählten Ereignisse endgültig.</translation>
    </message>
    <message>
        <source>Delete all events</source>
        <translation>Alle Ereignisse löschen</translation>
    </message>
    <message>
        <source>Are you sure you want to delete all events?</source>
        <translation>Möchten Sie wirklich alle Ereignisse löschen?</translation>
    </message>
    <message>
        <source>By clicking &apos;Yes&apos; you will permanently delete all events.</source>
        <translation>Mit „Ja“ löschen Sie alle Ereignisse endgültig.</translation>
    </message>
    <message>
        <source>No events selected</source>
        <translation>Keine Ereignisse ausgewählt</translation>
    </message>
    <message>
        <source>Please select specific events or check all events.</source>
        <translation>Bitte wählen Sie bestimmte Ereignisse aus oder kreuzen Sie alle Ereignisse an.</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Export all events</source>
        <translation>Alle Ereignisse exportieren</translation>
    </message>
</context>
<context>
    <name>quorbel::ScanViewEvent</name>
    <message>
        <source>Quorbel Event</source>
        <translation>Quorbel-Ereignis</translation>
    </message>
</context>
<context>
    <name>quorbel::ServiceDetails</name>
    <message>
        <source>Sender</source>
        <translation>Absender</translation>
    </message>
    <message>
        <source>Why</source>
        <translation>Warum</translation>
    </message>
    <message>
        <source>How often</source>
        <translation>Wie oft</translation>
    </message>
    <message>
        <source>Last</source>
        <translation>Zuletzt</translation>
    </message>
    <message>
        <source>Counter</source>
        <translation>Zähler</translation>
    </message>
    <message>
        <source>Count</source>
        <translation>Anzahl</translation>
    </message>
    <message>
        <source>Meaning</source>
        <translation>Bedeutung</translation>
    </message>
    <message>
        <source>Service</source>
        <translation>Dienst</translation>
    </message>
    <message>
        <source>Refused, last senders first</source>
        <translation>Abgewiesen, letzte Absender zuerst</translation>
    </message>
    <message>
        <source>Of a sender that is not listed here and of which no event came, nothing reached the service: look at its address and port, and at the firewall.</source>
        <translation>Von einem Absender, der hier nicht steht und von dem kein Ereignis kam, hat den Dienst nichts erreicht: Prüfen Sie, an welche Adresse und welchen Port er sendet, und die Firewall.</translation>
    </message>
    <message>
        <source>Counted since it started</source>
        <translation>Seit dem Start gezählt</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Asking the service</source>
        <translation>Der Dienst wird gefragt</translation>
    </message>
    <message>
        <source>QuorbelSrv %1, running since %2, listens on %3.</source>
        <translation>QuorbelSrv %1, läuft seit %2, empfängt auf %3.</translation>
    </message>
    <message>
        <source>Nothing was refused.</source>
        <translation>Nichts wurde abgewiesen.</translation>
    </message>
    <message>
        <source>Cannot be told</source>
        <translation>Lässt sich nicht sagen</translation>
    </message>
</context>
<context>
    <name>quorbel::ServiceLine</name>
    <message>
        <source>Service</source>
        <translation>Dienst</translation>
    </message>
    <message>
        <source>Problem</source>
        <translation>Problem</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Einzelheiten</translation>
    </message>
    <message>
        <source>Details of the service</source>
        <translation>Details zum Dienst</translation>
    </message>
    <message>
        <source>What the service counted, and what it refused from whom</source>
        <translation>Was der Dienst gezählt hat, und was er von wem abgewiesen hat</translation>
    </message>
    <message>
        <source>Service: %1</source>
        <translation>Dienst: %1</translation>
    </message>
</context>
<context>
    <name>quorbel::ServiceRows</name>
    <message>
        <source>Messages received</source>
        <translation>Empfangene Meldungen</translation>
    </message>
    <message>
        <source>Messages that came in</source>
        <translation>Eingegangene Meldungen</translation>
    </message>
    <message>
        <source>Malformed</source>
        <translation>Fehlerhaft</translation>
    </message>
    <message>
        <source>Without a usable priority or header, empty, or cut; all but the empty ones are stored</source>
        <translation>Ohne brauchbare Priorität oder brauchbaren Kopf, leer oder abgeschnitten; alle bis auf die leeren werden gespeichert</translation>
    </message>
    <message>
        <source>Stored</source>
        <translation>Gespeichert</translation>
    </message>
    <message>
        <source>Events in the log files; a long message is several</source>
        <translation>Ereignisse in den Protokolldateien; eine lange Meldung ergibt mehrere</translation>
    </message>
    <message>
        <source>Not stored</source>
        <translation>Nicht gespeichert</translation>
    </message>
    <message>
        <source>Events for which there was no room or no file: make room</source>
        <translation>Ereignisse, für die kein Platz oder keine Datei da war: Schaffen Sie Platz</translation>
    </message>
    <message>
        <source>Dropped</source>
        <translation>Verloren</translation>
    </message>
    <message>
        <source>UDP messages that came faster than they could be read: let busy senders use TCP</source>
        <translation>UDP-Meldungen, die schneller kamen, als sie gelesen werden konnten: Lassen Sie Sender, die viel senden, TCP verwenden</translation>
    </message>
    <message>
        <source>Not told</source>
        <translation>Nicht mitgeteilt</translation>
    </message>
    <message>
        <source>Changes that an open window was not told of: open it again</source>
        <translation>Änderungen, die ein offenes Fenster nicht erfahren hat: Öffnen Sie es neu</translation>
    </message>
    <message>
        <source>Connections closed</source>
        <translation>Geschlossene Verbindungen</translation>
    </message>
    <message>
        <source>Idle connections that made room for new ones</source>
        <translation>Untätige Verbindungen, die neuen Platz machten</translation>
    </message>
    <message>
        <source>Closed unread</source>
        <translation>Ungelesen geschlossen</translation>
    </message>
    <message>
        <source>Connections closed before all that had arrived was read</source>
        <translation>Verbindungen, die geschlossen wurden, bevor alles Eingetroffene gelesen war</translation>
    </message>
    <message>
        <source>Stray texts</source>
        <translation>Texte dazwischen</translation>
    </message>
    <message>
        <source>Messages between the counted ones of a connection: the sender counts wrong</source>
        <translation>Meldungen zwischen den gezählten einer Verbindung: Der Sender zählt falsch</translation>
    </message>
    <message>
        <source>Bytes skipped</source>
        <translation>Ausgelassene Bytes</translation>
    </message>
    <message>
        <source>What messages over TCP had beyond 65,536 bytes</source>
        <translation>Was Meldungen über TCP jenseits von 65.536 Bytes enthielten</translation>
    </message>
    <message>
        <source>TLS failures</source>
        <translation>Gescheitertes TLS</translation>
    </message>
    <message>
        <source>TLS connections that failed: most often a certificate</source>
        <translation>TLS-Verbindungen, die nicht zustande kamen: meist wegen eines Zertifikats</translation>
    </message>
    <message>
        <source>Filtered</source>
        <translation>Gefiltert</translation>
    </message>
    <message>
        <source>Messages that filters left out</source>
        <translation>Meldungen, die Filter ausgelassen haben</translation>
    </message>
    <message>
        <source>Removed</source>
        <translation>Entfernt</translation>
    </message>
    <message>
        <source>Events removed because of their age</source>
        <translation>Ereignisse, die ihres Alters wegen entfernt wurden</translation>
    </message>
    <message>
        <source>Names looked up</source>
        <translation>Gesuchte Namen</translation>
    </message>
    <message>
        <source>Senders&apos; names that were asked for</source>
        <translation>Namen von Sendern, nach denen gefragt wurde</translation>
    </message>
    <message>
        <source>Names found</source>
        <translation>Gefundene Namen</translation>
    </message>
    <message>
        <source>Those of them that were found</source>
        <translation>Diejenigen davon, die gefunden wurden</translation>
    </message>
    <message>
        <source>Names not looked up</source>
        <translation>Nicht gesuchte Namen</translation>
    </message>
    <message>
        <source>Look-ups left out because too many were waiting</source>
        <translation>Suchen, die ausblieben, weil schon zu viele warteten</translation>
    </message>
    <message>
        <source>Events set</source>
        <translation>Gesetzte Ereignisse</translation>
    </message>
    <message>
        <source>Events that actions made</source>
        <translation>Ereignisse, die Aktionen erzeugt haben</translation>
    </message>
    <message>
        <source>Actions held back</source>
        <translation>Zurückgehaltene Aktionen</translation>
    </message>
    <message>
        <source>What actions did not do because it came too often</source>
        <translation>Was Aktionen nicht getan haben, weil es zu oft kam</translation>
    </message>
    <message>
        <source>Commands run</source>
        <translation>Ausgeführte Befehle</translation>
    </message>
    <message>
        <source>Commands of actions that were started</source>
        <translation>Befehle von Aktionen, die gestartet wurden</translation>
    </message>
    <message>
        <source>Commands not run</source>
        <translation>Nicht ausgeführte Befehle</translation>
    </message>
    <message>
        <source>Those that could not be started, or for which too many waited</source>
        <translation>Solche, die sich nicht starten ließen oder für die schon zu viele warteten</translation>
    </message>
    <message>
        <source>E-mails sent</source>
        <translation>Gesendete E-Mails</translation>
    </message>
    <message>
        <source>E-mails that the mail server took for somebody</source>
        <translation>E-Mails, die der Mailserver für jemanden angenommen hat</translation>
    </message>
    <message>
        <source>E-mails dropped</source>
        <translation>Verlorene E-Mails</translation>
    </message>
    <message>
        <source>E-mails that at least one recipient did not get</source>
        <translation>E-Mails, die mindestens ein Empfänger nicht bekommen hat</translation>
    </message>
    <message>
        <source>Journal lines dropped</source>
        <translation>Verlorene Journalzeilen</translation>
    </message>
    <message>
        <source>Lines that the journal did not take in time</source>
        <translation>Zeilen, die das Journal nicht rechtzeitig angenommen hat</translation>
    </message>
    <message>
        <source>Perhaps not on disk</source>
        <translation>Vielleicht nicht auf dem Datenträger</translation>
    </message>
    <message>
        <source>Stored events that the disk would not confirm: look at it</source>
        <translation>Gespeicherte Ereignisse, die der Datenträger nicht bestätigt hat: Prüfen Sie ihn</translation>
    </message>
    <message>
        <source>No include filter matches</source>
        <translation>Kein Einschlussfilter trifft zu</translation>
    </message>
    <message>
        <source>Kept out by the filter %1</source>
        <translation>Ausgelassen vom Filter %1</translation>
    </message>
    <message>
        <source>Too long, the rest is not stored</source>
        <translation>Zu lang, der Rest ist nicht gespeichert</translation>
    </message>
    <message>
        <source>Connection closed to make room</source>
        <translation>Verbindung geschlossen, um Platz zu machen</translation>
    </message>
    <message>
        <source>TLS failed</source>
        <translation>TLS kam nicht zustande</translation>
    </message>
    <message>
        <source>Wrong port</source>
        <translation>Falscher Port</translation>
    </message>
    <message>
        <source>Matches below threshold</source>
        <translation>Treffer unter der Schwelle</translation>
    </message>
    <message>
        <source>Matches at which an action waited for its threshold</source>
        <translation>Treffer, bei denen eine Aktion auf ihre Schwelle wartete</translation>
    </message>
    <message>
        <source>Threshold hosts forgotten</source>
        <translation>Vergessene Hosts von Schwellen</translation>
    </message>
    <message>
        <source>Hosts for which a threshold had no room: narrow its filter</source>
        <translation>Hosts, für die eine Schwelle keinen Platz hatte: ihren Filter enger fassen</translation>
    </message>
    <message>
        <source>Relayed</source>
        <translation>Weitergeleitet</translation>
    </message>
    <message>
        <source>Messages whose host a relay has named</source>
        <translation>Meldungen, deren Host ein Relais genannt hat</translation>
    </message>
    <message>
        <source>Events sent on</source>
        <translation>Ereignisse weitergesendet</translation>
    </message>
    <message>
        <source>Events that reached the receivers of outputs</source>
        <translation>Ereignisse, die bei den Empfängern der Ausgaben angekommen sind</translation>
    </message>
    <message>
        <source>Events removed unsent</source>
        <translation>Ungesendet entfernt</translation>
    </message>
    <message>
        <source>Events that were removed before an output could send them: is the receiver there?</source>
        <translation>Ereignisse, die entfernt wurden, bevor eine Ausgabe sie senden konnte: ist der Empfänger da?</translation>
    </message>
</context>
<context>
    <name>quorbel::ServiceTexts</name>
    <message>
        <source>There is no system bus</source>
        <translation>Es gibt keinen Systembus</translation>
    </message>
    <message>
        <source>The service does not run</source>
        <translation>Der Dienst läuft nicht</translation>
    </message>
    <message>
        <source>The service does not answer</source>
        <translation>Der Dienst antwortet nicht</translation>
    </message>
    <message>
        <source>Asking the service</source>
        <translation>Der Dienst wird gefragt</translation>
    </message>
    <message>
        <source>Connected</source>
        <translation>Verbunden</translation>
    </message>
    <message>
        <source>Not connected</source>
        <translation>Nicht verbunden</translation>
    </message>
    <message>
        <source>Since %1</source>
        <translation>Seit %1</translation>
    </message>
    <message>
        <source>Last event %1 ago</source>
        <translation>Letztes Ereignis vor %1</translation>
    </message>
    <message>
        <source>No event yet</source>
        <translation>Noch kein Ereignis</translation>
    </message>
    <message>
        <source>The rest cannot be told</source>
        <translation>Mehr lässt sich nicht sagen</translation>
    </message>
    <message>
        <source>No access: join the group quorbel</source>
        <translation>Kein Zugriff: Treten Sie der Gruppe quorbel bei</translation>
    </message>
    <message>
        <source>No settings saved yet: nothing is ever removed</source>
        <translation>Noch keine Einstellungen gespeichert: Nichts wird je entfernt</translation>
    </message>
    <message>
        <source>The last save was not taken</source>
        <translation>Das letzte Speichern wurde nicht angenommen</translation>
    </message>
    <message>
        <source>%1 filtered</source>
        <translation>%1 gefiltert</translation>
    </message>
    <message>
        <source>%1 not stored</source>
        <translation>%1 nicht gespeichert</translation>
    </message>
    <message>
        <source>%1 dropped</source>
        <translation>%1 verloren</translation>
    </message>
    <message>
        <source>%1 not told</source>
        <translation>%1 nicht mitgeteilt</translation>
    </message>
    <message>
        <source>Port %1</source>
        <translation>Port %1</translation>
    </message>
    <message>
        <source>Another program listens on port %1</source>
        <translation>Auf Port %1 empfängt ein anderes Programm</translation>
    </message>
    <message>
        <source>Nobody listens on port %1</source>
        <translation>Auf Port %1 empfängt niemand</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 min</translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation>%1 h</translation>
    </message>
    <message>
        <source>%1 d</source>
        <translation>%1 d</translation>
    </message>
    <message>
        <source>Cannot be told: only members of the groups quorbel and quorbel-readers may ask the service.</source>
        <translation>Lässt sich nicht sagen: Nur Mitglieder der Gruppen quorbel und quorbel-readers dürfen den Dienst fragen.</translation>
    </message>
    <message>
        <source>Cannot be told: the service that runs is an older one.</source>
        <translation>Lässt sich nicht sagen: Es läuft ein älterer Dienst.</translation>
    </message>
    <message>
        <source>Cannot be told: %1.</source>
        <translation>Lässt sich nicht sagen: %1.</translation>
    </message>
</context>
<context>
    <name>quorbel::SeverityCard</name>
    <message>
        <source>Makes the rating severe</source>
        <translation>Macht die Bewertung schwer</translation>
    </message>
    <message>
        <source>Hours</source>
        <translation>Stunden</translation>
    </message>
    <message>
        <source>24 h: %1</source>
        <translation>24 h: %1</translation>
    </message>
    <message>
        <source>Last 24 hours: %1</source>
        <translation>Letzte 24 Stunden: %1</translation>
    </message>
    <message>
        <source>%1 to now</source>
        <translation>%1 bis jetzt</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>Click: show the %1 events</source>
        <translation>Klick: die Ereignisse „%1“ zeigen</translation>
    </message>
    <message>
        <source>%1, last 24 hours: %2</source>
        <translation>%1, letzte 24 Stunden: %2</translation>
    </message>
    <message>
        <source>%1; the day before: %2</source>
        <translation>%1; am Tag davor: %2</translation>
    </message>
    <message>
        <source>%1: %2, day before %3</source>
        <translation>%1: %2, am Tag davor %3</translation>
    </message>
</context>
<context>
    <name>quorbel::SeverityControls</name>
    <message>
        <source>Remove %1 events after some time</source>
        <translation>Ereignisse mit Schweregrad %1 nach einiger Zeit entfernen</translation>
    </message>
    <message>
        <source>How long %1 events are kept</source>
        <translation>Wie lange Ereignisse mit Schweregrad %1 aufbewahrt werden</translation>
    </message>
    <message>
        <source>How long %1 events are kept, stepper</source>
        <translation>Wie lange Ereignisse mit Schweregrad %1 aufbewahrt werden, Drehfeld</translation>
    </message>
    <message>
        <source>Unit of time for %1 events</source>
        <translation>Zeiteinheit für Ereignisse mit Schweregrad %1</translation>
    </message>
    <message>
        <source>Minutes</source>
        <translation>Minuten</translation>
    </message>
    <message>
        <source>Hours</source>
        <translation>Stunden</translation>
    </message>
    <message>
        <source>Days</source>
        <translation>Tage</translation>
    </message>
    <message>
        <source>Weeks</source>
        <translation>Wochen</translation>
    </message>
    <message>
        <source>Months</source>
        <translation>Monate</translation>
    </message>
    <message>
        <source>Rating of %1 events</source>
        <translation>Bewertung von Ereignissen mit Schweregrad %1</translation>
    </message>
    <message>
        <source>Popup for %1 events</source>
        <translation>Popup bei Ereignissen mit Schweregrad %1</translation>
    </message>
    <message>
        <source>Sound for %1 events</source>
        <translation>Ton bei Ereignissen mit Schweregrad %1</translation>
    </message>
</context>
<context>
    <name>quorbel::ShowingOptions</name>
    <message>
        <source>Not a date format: dates would be empty</source>
        <translation>Kein Datumsformat: Datumsangaben wären leer</translation>
    </message>
    <message>
        <source>Example: %1</source>
        <translation>Beispiel: %1</translation>
    </message>
</context>
<context>
    <name>quorbel::SilentHosts</name>
    <message>
        <source>usually every %1</source>
        <translation>gewöhnlich alle %1</translation>
    </message>
    <message>
        <source>%1: silent %2, %3</source>
        <translation>%1: stumm %2, %3</translation>
    </message>
</context>
<context>
    <name>quorbel::SoundOptions</name>
    <message>
        <source>Please select sound file name with &apos;aif&apos; extension:</source>
        <translation>Bitte wählen Sie eine Tondatei mit der Endung „aif“:</translation>
    </message>
</context>
<context>
    <name>quorbel::SoundTrial</name>
    <message>
        <source>It cannot be played: it is no sound file, or there is no sound device</source>
        <translation>Lässt sich nicht abspielen: keine Tondatei, oder es gibt kein Tongerät</translation>
    </message>
    <message>
        <source>There is no such file: no sound will be heard</source>
        <translation>Es gibt keine solche Datei: Es wird kein Ton zu hören sein</translation>
    </message>
</context>
<context>
    <name>quorbel::TableExport</name>
    <message>
        <source>Please select export file name with &apos;txt&apos; or &apos;csv&apos; extensions:</source>
        <translation>Bitte wählen Sie eine Exportdatei mit der Endung „txt“ oder „csv“:</translation>
    </message>
    <message>
        <source>Writing the export file</source>
        <translation>Die Exportdatei wird geschrieben</translation>
    </message>
    <message>
        <source>Rows written</source>
        <translation>Geschriebene Zeilen</translation>
    </message>
</context>
<context>
    <name>quorbel::ThresholdForm</name>
    <message>
        <source>1 minute</source>
        <translation>1 Minute</translation>
    </message>
    <message numerus="yes">
        <source>%1 minutes</source>
        <translation>
            <numerusform>%1 Minute</numerusform>
            <numerusform>%1 Minuten</numerusform>
        </translation>
    </message>
    <message>
        <source>The stored threshold cannot be used: acts at each match</source>
        <translation>Die gespeicherte Schwelle ist unbrauchbar: handelt bei jedem Treffer</translation>
    </message>
    <message>
        <source>Acts at each match</source>
        <translation>Handelt bei jedem Treffer</translation>
    </message>
    <message>
        <source>Without both numbers: acts at each match</source>
        <translation>Ohne beide Zahlen: handelt bei jedem Treffer</translation>
    </message>
    <message>
        <source>Then this host pauses for %1</source>
        <translation>Danach Pause je Host: %1</translation>
    </message>
    <message>
        <source>Then it pauses for %1</source>
        <translation>Danach Pause: %1</translation>
    </message>
</context>
<context>
    <name>quorbel::TimeTexts</name>
    <message>
        <source>d MMM</source>
        <extracomment>A day of the timeline: see QDate::toString().</extracomment>
        <translation>d. MMM</translation>
    </message>
    <message>
        <source>MMM yyyy</source>
        <translation>MMM yyyy</translation>
    </message>
    <message>
        <source>d MMM yyyy</source>
        <translation>d. MMM yyyy</translation>
    </message>
</context>
<context>
    <name>quorbel::Timeline</name>
    <message>
        <source>others</source>
        <translation>andere</translation>
    </message>
    <message>
        <source>Timeline</source>
        <translation>Zeitleiste</translation>
    </message>
    <message>
        <source>When the events happened. Arrow keys, plus, minus and Home look around; with Shift, arrow keys select a span. Return narrows the table to it, Backspace goes a step back. A menu chooses what the columns are stacked by</source>
        <translation>Wann die Ereignisse eintraten. Mit den Pfeiltasten, Plus, Minus und Pos1 sehen Sie sich um; mit Umschalt wählen die Pfeiltasten einen Zeitraum. Die Eingabetaste schränkt die Tabelle darauf ein, die Rücktaste geht einen Schritt zurück. Ein Menü wählt, wonach die Säulen gestapelt sind</translation>
    </message>
    <message>
        <source>Timeline: %1</source>
        <translation>Zeitleiste: %1</translation>
    </message>
    <message>
        <source>1 new event waits</source>
        <translation>1 neues Ereignis wartet</translation>
    </message>
    <message numerus="yes">
        <source>%1 new events wait</source>
        <translation>
            <numerusform>%1 neues Ereignis wartet</numerusform>
            <numerusform>%1 neue Ereignisse warten</numerusform>
        </translation>
    </message>
    <message>
        <source>%1, %2 severe</source>
        <translation>%1, %2 schwer</translation>
    </message>
</context>
<context>
    <name>quorbel::TimelineFold</name>
    <message>
        <source>Timeline</source>
        <translation>Zeitleiste</translation>
    </message>
    <message>
        <source>Hide the timeline</source>
        <translation>Die Zeitleiste verbergen</translation>
    </message>
    <message>
        <source>Show when the events happened</source>
        <translation>Zeigen, wann die Ereignisse eintraten</translation>
    </message>
</context>
<context>
    <name>quorbel::TimelineMenu</name>
    <message>
        <source>Stack by &amp;Rating</source>
        <translation>Nach &amp;Bewertung stapeln</translation>
    </message>
    <message>
        <source>Stack by &amp;Host</source>
        <translation>Nach &amp;Host stapeln</translation>
    </message>
    <message>
        <source>Stack by &amp;Facility</source>
        <translation>Nach &amp;Facility stapeln</translation>
    </message>
</context>
<context>
    <name>quorbel::ToolsViewActions</name>
    <message>
        <source>Command</source>
        <translation>Befehl</translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation>E-Mail</translation>
    </message>
    <message>
        <source>Event</source>
        <translation>Ereignis</translation>
    </message>
    <message>
        <source>Reactions</source>
        <translation>Reaktionen</translation>
    </message>
    <message>
        <source>No actions yet.
Add one to run a command, send an e-mail or set an event when certain events arrive.</source>
        <translation>Noch keine Aktionen.
Fügen Sie eine hinzu, um einen Befehl auszuführen, eine E-Mail zu senden oder ein Ereignis zu setzen, wenn bestimmte Ereignisse eintreffen.</translation>
    </message>
</context>
<context>
    <name>quorbel::ToolsViewExport</name>
    <message>
        <source>Please select text file location with &apos;txt&apos; or &apos;csv&apos; extensions:</source>
        <translation>Bitte wählen Sie den Ort der Textdatei mit der Endung „txt“ oder „csv“:</translation>
    </message>
    <message>
        <source>Please select database file location with &apos;db&apos; extension:</source>
        <translation>Bitte wählen Sie den Ort der Datenbankdatei mit der Endung „db“:</translation>
    </message>
</context>
<context>
    <name>quorbel::ToolsViewFilter</name>
    <message>
        <source>Quorbel Filter</source>
        <translation>Quorbel-Filter</translation>
    </message>
</context>
<context>
    <name>quorbel::WindowController</name>
    <message>
        <source>Menu</source>
        <translation>Menü</translation>
    </message>
    <message>
        <source>Quorbel is starting</source>
        <translation>Quorbel startet</translation>
    </message>
    <message>
        <source>Loading the stored events</source>
        <translation>Die gespeicherten Ereignisse werden geladen</translation>
    </message>
    <message>
        <source>Stored events loaded</source>
        <translation>Geladene Ereignisse</translation>
    </message>
</context>
</TS>
