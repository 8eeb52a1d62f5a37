// A client in another language: imports an export through the service and prints the reply as JSON.
// gjs client.js FILE_URL DIRECTORY_URL INTERFACE_XML
const {Gio, GLib} = imports.gi;
const name = 'com.tesseral.Quillet.ENEXImport1';
const path = '/com/tesseral/Quillet/ENEXImport1';
const description = ARGV[2];

const [, bytes] = GLib.file_get_contents(description);
const Proxy = Gio.DBusProxy.makeProxyWrapper(imports.byteArray.toString(bytes));
const service = new Proxy(Gio.DBus.session, name, path);
service.g_default_timeout = GLib.MAXINT32; // an import lasts as long as it lasts

const [reply] = service.ImportENEXFileSync(ARGV[0], {Debug: new GLib.Variant('b', false)}, ARGV[1]);
let refusal = '';
try {
    service.ImportENEXFileSync('nonsense', {}, ARGV[1]);
} catch (error) {
    refusal = Gio.DBusError.get_remote_error(error);
}
print(JSON.stringify({
    items: reply['Items'].recursiveUnpack().map(item => item.name),
    failed: reply['Error Notes'].deepUnpack(),
    log: reply['Log File'].unpack(),
    types: [reply['Items'].get_type_string(), reply['Error Notes'].get_type_string()],
    refusal,
}));
