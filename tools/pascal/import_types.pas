{ import_types LIBRARY UNIT: Free Pascal's own importer of type libraries. It writes a unit of Pascal declarations. }
program import_types;

{$mode objfpc}{$H+}

uses
  Classes, ActiveX, TypeLib;

var
  UnitName, Package, Registration: string;
  Dependencies, Imported: TStringList;

begin
  CoInitialize(nil);
  Dependencies := TStringList.Create;
  Imported := TStringList.Create;
  Imported.Text := ImportTypelib(ParamStr(1), UnitName, Dependencies, False, False, False, Package, Registration);
  Imported.SaveToFile(ParamStr(2));
end.
