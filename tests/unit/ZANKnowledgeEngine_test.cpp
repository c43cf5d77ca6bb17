// The knowledge engine: component handles, types, parameters, lists, objects, attribute reads.
#include <KOVAMappingServices/ZANKnowledge.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

ZANIType_var Type(const char* name) {
  ZANIType_var type = ZANKnwBuilder::FindType(name);
  EXPECT_FALSE(type.IsNull()) << name;
  return type;
}

std::string Text(const ZANUnicodeString& s) { return s.ConvertToChar(); }

// ---------------------------------------------------------------------------------------------
// Component handles

TEST(ZANComponentHandles, DefaultAndNullHandlesAreNull) {
  ZANBaseUnknown_var base;
  ZANIKnwParm_var parm;
  ZANIType_var fromNull(nullptr);
  EXPECT_TRUE(base.IsNull());
  EXPECT_TRUE(!base);
  EXPECT_TRUE(parm.IsNull());
  EXPECT_FALSE(static_cast<bool>(parm));
  EXPECT_EQ(parm.Get(), nullptr);
  EXPECT_TRUE(fromNull.IsNull());
}

TEST(ZANComponentHandles, CastToOfferedInterfaceSharesTheComponent) {
  const ZANIKnwParm_var parm = ZANKnwBuilder::MakeIntegerParm(7);
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the conversion is what is tested
  const ZANBaseUnknown_var base = parm;
  ASSERT_FALSE(base.IsNull());
  const ZANIKnwParm_var again(base);
  ASSERT_FALSE(again.IsNull());
  EXPECT_EQ(again.Get(), parm.Get());
  EXPECT_TRUE(again == parm);
  EXPECT_EQ(base.GetComponent().use_count(), 3);  // parm, base and again share one component
}

TEST(ZANComponentHandles, CastToInterfaceNotOfferedGivesNullHandle) {
  const ZANIKnwParm_var parm = ZANKnwBuilder::MakeIntegerParm(7);
  const ZANIType_var type(parm);
  const ZANIInstance_var instance(parm);
  const ZANIList_var list(parm);
  EXPECT_TRUE(type.IsNull());
  EXPECT_TRUE(instance.IsNull());
  EXPECT_TRUE(list.IsNull());
  EXPECT_EQ(type.GetComponent(), nullptr);  // a null cast holds no component
}

TEST(ZANComponentHandles, UsingANullHandleRaisesThePlatformError) {
  const ZANIKnwParm_var parm;
  try {
    (void)parm->IsSet();
    FAIL() << "no exception";
  } catch (const ZANNullVarError& error) {
    EXPECT_EQ(error.HandleName(), "ZANIKnwParm_var");
    EXPECT_STREQ(error.what(), "null handle used: ZANIKnwParm_var");
  }
  const ZANIInstance_var instance;
  EXPECT_THROW((void)*instance, ZANNullVarError);
}

TEST(ZANComponentHandles, ThrowErrorNullVarRaisesAStdException) {
  try {
    ZANBaseUnknown_var::ThrowErrorNullVar("ZANIList_var");
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "null handle used: ZANIList_var");
    EXPECT_NE(dynamic_cast<const ZANNullVarError*>(&error), nullptr);
    return;
  }
  FAIL() << "no exception";
}

TEST(ZANComponentHandles, HandlesConvertToAndFromZANBaseUnknown) {
  const ZANBaseUnknown_var object = ZANKnwBuilder::MakeObject(Type("GRDReference"));
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the conversion is what is tested
  const ZANBaseUnknown owner = object;  // what a mapping table keeps as its owner
  EXPECT_TRUE(owner == object);
  const ZANIInstance_var instance(owner);
  ASSERT_FALSE(instance.IsNull());
  EXPECT_EQ(instance->GetType().Get(), Type("GRDReference").Get());
}

TEST(ZANComponentHandles, MovedFromHandleIsNull) {
  ZANIKnwParm_var parm = ZANKnwBuilder::MakeIntegerParm(7);
  ZANIKnwParm_var moved(std::move(parm));
  EXPECT_FALSE(moved.IsNull());
  EXPECT_TRUE(parm.IsNull());  // NOLINT(bugprone-use-after-move): the moved-from state is defined
  EXPECT_EQ(parm.Get(), nullptr);
  ZANIKnwParm_var assigned;
  assigned = std::move(moved);
  EXPECT_FALSE(assigned.IsNull());
  EXPECT_TRUE(moved.IsNull());  // NOLINT(bugprone-use-after-move): the moved-from state is defined
  EXPECT_EQ(assigned->GetValue()->AsInteger(), 7);
}

TEST(ZANComponentHandles, ComponentLivesWhileAnyHandleDoes) {
  std::weak_ptr<ZANComponent> watch;
  {
    ZANIKnwValue_var value = ZANKnwBuilder::MakeStringValue("x");
    watch = value.GetComponent();
    const ZANBaseUnknown_var copy = value;
    value = nullptr;
    EXPECT_FALSE(watch.expired());
  }
  EXPECT_TRUE(watch.expired());
}

// ---------------------------------------------------------------------------------------------
// Types and the type dictionary

TEST(ZANKnwTypes, DictionaryIsOneForTheProcess) {
  const ZANITypeDictionary_var a = ZANGlobalFunctions::GetTypeDictionary();
  const ZANITypeDictionary_var b = ZANGlobalFunctions::GetTypeDictionary();
  ASSERT_FALSE(a.IsNull());
  EXPECT_EQ(a.Get(), b.Get());
}

TEST(ZANKnwTypes, StandardTypesAreRegistered) {
  for (const char* name : {"String", "Integer", "Real", "Boolean", "Length", "Mass", "Time", "Enumeration", "List",
                           "GRDEntity", "GRDReference", "GRDRepReference", "GRDInstance", "GRDRepInstance"}) {
    ZANIType_var type;
    EXPECT_EQ(ZANGlobalFunctions::GetTypeDictionary()->FindType(name, type), S_OK) << name;
    ASSERT_FALSE(type.IsNull()) << name;
    EXPECT_EQ(Text(type->GetName()), name);
  }
}

TEST(ZANKnwTypes, UnknownNameFailsAndLeavesTheOutputAlone) {
  ZANIType_var type = Type("Real");
  EXPECT_EQ(ZANGlobalFunctions::GetTypeDictionary()->FindType("NoSuchType", type), E_FAIL);
  EXPECT_EQ(type.Get(), Type("Real").Get());
  EXPECT_TRUE(ZANKnwBuilder::FindType("NoSuchType").IsNull());
}

TEST(ZANKnwTypes, LiteralTestsOfStandardTypes) {
  const ZANIType_var string = Type("String");
  const ZANIType_var integer = Type("Integer");
  const ZANIType_var real = Type("Real");
  const ZANIType_var boolean = Type("Boolean");
  EXPECT_NE(string->IsString(), 0);
  EXPECT_EQ(string->IsInteger() | string->IsReal() | string->IsBoolean(), 0);
  EXPECT_NE(integer->IsInteger(), 0);
  EXPECT_EQ(integer->IsString() | integer->IsReal() | integer->IsBoolean(), 0);
  EXPECT_NE(real->IsReal(), 0);
  EXPECT_EQ(real->IsString() | real->IsInteger() | real->IsBoolean(), 0);
  EXPECT_NE(boolean->IsBoolean(), 0);
  EXPECT_EQ(boolean->IsString() | boolean->IsInteger() | boolean->IsReal(), 0);
  for (const char* name : {"Time", "Enumeration", "List", "GRDEntity", "GRDInstance"}) {
    const ZANIType_var type = Type(name);
    EXPECT_EQ(type->IsString() | type->IsInteger() | type->IsReal() | type->IsBoolean(), 0) << name;
  }
}

TEST(ZANKnwTypes, KindOfFollowsTheParentChain) {
  const ZANIType_var real = Type("Real");
  const ZANIType_var mass = Type("Mass");
  EXPECT_TRUE(mass->IsaKindOf(real));
  EXPECT_TRUE(mass->IsaKindOf(mass));
  EXPECT_FALSE(real->IsaKindOf(mass));
  EXPECT_NE(mass->IsReal(), 0);
  EXPECT_EQ(mass->GetParent().Get(), real.Get());
  EXPECT_TRUE(real->GetParent().IsNull());
  EXPECT_FALSE(mass->IsaKindOf(nullptr));

  const ZANIType_var entity = Type("GRDEntity");
  EXPECT_TRUE(Type("GRDInstance")->IsaKindOf(entity));
  EXPECT_TRUE(Type("GRDRepInstance")->IsaKindOf(entity));
  EXPECT_FALSE(Type("GRDRepInstance")->IsaKindOf(Type("GRDInstance")));
  EXPECT_FALSE(Type("GRDReference")->IsaKindOf(Type("GRDInstance")));
  EXPECT_FALSE(Type("GRDReference")->IsaKindOf(Type("GRDRepInstance")));
}

TEST(ZANKnwTypes, CreatedTypesInheritAndCanBeRegistered) {
  const ZANIType_var torque = ZANKnwBuilder::CreateType("EngineTestTorque", Type("Real"));
  const ZANIType_var strongTorque = ZANKnwBuilder::CreateType("EngineTestStrongTorque", torque);
  EXPECT_NE(strongTorque->IsReal(), 0);
  EXPECT_TRUE(strongTorque->IsaKindOf(Type("Real")));
  EXPECT_TRUE(ZANKnwBuilder::FindType("EngineTestTorque").IsNull());  // not registered yet

  const ZANITypeDictionary_var dictionary = ZANGlobalFunctions::GetTypeDictionary();
  EXPECT_EQ(dictionary->RegisterType(torque), S_OK);
  EXPECT_EQ(ZANKnwBuilder::FindType("EngineTestTorque").Get(), torque.Get());
  // A second type of the same name is refused; the first stays.
  EXPECT_EQ(dictionary->RegisterType(ZANKnwBuilder::CreateType("EngineTestTorque", nullptr)), E_FAIL);
  EXPECT_EQ(ZANKnwBuilder::FindType("EngineTestTorque").Get(), torque.Get());
  EXPECT_EQ(dictionary->RegisterType(ZANKnwBuilder::CreateType("Real", nullptr)), E_FAIL);
  EXPECT_EQ(dictionary->RegisterType(nullptr), E_FAIL);
  EXPECT_EQ(dictionary->RegisterType(ZANKnwBuilder::CreateType("", nullptr)), E_FAIL);
}

TEST(ZANKnwTypes, SameNameIsNotTheSameType) {
  const ZANIType_var impostor = ZANKnwBuilder::CreateType("GRDInstance", nullptr);
  EXPECT_FALSE(impostor->IsaKindOf(Type("GRDInstance")));
  const ZANIType_var root = ZANKnwBuilder::CreateType("EngineTestRoot", nullptr);
  EXPECT_EQ(root->IsString() | root->IsInteger() | root->IsReal() | root->IsBoolean(), 0);
}

// ---------------------------------------------------------------------------------------------
// Parameter dictionary

TEST(ZANKnwParmDictionary, HandsOutTheTypeDictionarysTypes) {
  const ZANIParmDictionary_var parms = ZANKnwGlobalFunctions::GetParmDictionary();
  ASSERT_FALSE(parms.IsNull());
  EXPECT_EQ(parms.Get(), ZANKnwGlobalFunctions::GetParmDictionary().Get());
  EXPECT_EQ(parms->GetTimeType().Get(), Type("Time").Get());
  EXPECT_EQ(parms->GetEnumType().Get(), Type("Enumeration").Get());
  EXPECT_EQ(parms->GetListType().Get(), Type("List").Get());
}

// ---------------------------------------------------------------------------------------------
// Parameters and values

TEST(ZANKnwParms, EachKindKeepsTypeValueAndFlag) {
  const ZANIKnwParm_var s = ZANKnwBuilder::MakeStringParm("A1");
  EXPECT_EQ(s->GetType().Get(), Type("String").Get());
  EXPECT_EQ(Text(s->GetValue()->AsString()), "A1");
  EXPECT_NE(s->IsSet(), 0);

  const ZANIKnwParm_var i = ZANKnwBuilder::MakeIntegerParm(-42, false);
  EXPECT_EQ(i->GetType().Get(), Type("Integer").Get());
  EXPECT_EQ(i->GetValue()->AsInteger(), -42);
  EXPECT_EQ(i->IsSet(), 0);

  const ZANIKnwParm_var r = ZANKnwBuilder::MakeRealParm(2.5, true, Type("Mass"));
  EXPECT_EQ(r->GetType().Get(), Type("Mass").Get());
  EXPECT_EQ(r->GetValue()->AsReal(), 2.5);

  const ZANIKnwParm_var b = ZANKnwBuilder::MakeBooleanParm(true);
  EXPECT_EQ(b->GetType().Get(), Type("Boolean").Get());
  EXPECT_EQ(b->GetValue()->AsBoolean(), 1);

  const ZANIKnwParm_var t = ZANKnwBuilder::MakeTimeParm(ZANTime(1700000000));
  EXPECT_EQ(t->GetType().Get(), Type("Time").Get());
  EXPECT_EQ(t->GetValue()->AsTime().Gettime_t(), 1700000000);

  const ZANIKnwParm_var e = ZANKnwBuilder::MakeEnumParm(3);
  EXPECT_EQ(e->GetType().Get(), Type("Enumeration").Get());
  EXPECT_EQ(e->GetValue()->AsInteger(), 3);

  const ZANIList_var list = ZANKnwBuilder::MakeList({s, i});
  const ZANIKnwParm_var l = ZANKnwBuilder::MakeListParm(list);
  EXPECT_EQ(l->GetType().Get(), Type("List").Get());
  const ZANIList_var read(l->GetValue()->AsObject());
  ASSERT_FALSE(read.IsNull());
  EXPECT_EQ(read.Get(), list.Get());
}

TEST(ZANKnwParms, UnsetParmHoldsItsKindsDefault) {
  const ZANIType_var color = ZANKnwBuilder::CreateType("EngineTestColor", Type("Enumeration"));
  const ZANIKnwParm_var s = ZANKnwBuilder::MakeUnsetParm(Type("String"));
  const ZANIKnwParm_var i = ZANKnwBuilder::MakeUnsetParm(Type("Integer"));
  const ZANIKnwParm_var r = ZANKnwBuilder::MakeUnsetParm(Type("Length"));
  const ZANIKnwParm_var b = ZANKnwBuilder::MakeUnsetParm(Type("Boolean"));
  const ZANIKnwParm_var t = ZANKnwBuilder::MakeUnsetParm(Type("Time"));
  const ZANIKnwParm_var e = ZANKnwBuilder::MakeUnsetParm(color);
  const ZANIKnwParm_var l = ZANKnwBuilder::MakeUnsetParm(Type("List"));
  const ZANIKnwParm_var o = ZANKnwBuilder::MakeUnsetParm(Type("GRDReference"));
  const ZANIKnwParm_var n = ZANKnwBuilder::MakeUnsetParm(nullptr);
  for (const ZANIKnwParm_var& p : {s, i, r, b, t, e, l, o, n}) EXPECT_EQ(p->IsSet(), 0);
  EXPECT_EQ(Text(s->GetValue()->AsString()), "");
  EXPECT_EQ(i->GetValue()->AsInteger(), 0);
  EXPECT_EQ(r->GetValue()->AsReal(), 0.0);
  EXPECT_EQ(r->GetType().Get(), Type("Length").Get());
  EXPECT_EQ(b->GetValue()->AsBoolean(), 0);
  EXPECT_EQ(t->GetValue()->AsTime().Gettime_t(), 0);
  EXPECT_EQ(e->GetValue()->AsInteger(), 0);
  const ZANIList_var emptyList(l->GetValue()->AsObject());
  ASSERT_FALSE(emptyList.IsNull());
  EXPECT_EQ(emptyList->Size(), 0);
  EXPECT_TRUE(o->GetValue().IsNull());
  EXPECT_TRUE(n->GetValue().IsNull());
  EXPECT_TRUE(n->GetType().IsNull());
}

TEST(ZANKnwParms, MakeParmKeepsNullTypeAndValue) {
  const ZANIKnwParm_var p = ZANKnwBuilder::MakeParm(nullptr, nullptr, true);
  ASSERT_FALSE(p.IsNull());
  EXPECT_TRUE(p->GetType().IsNull());
  EXPECT_TRUE(p->GetValue().IsNull());
  EXPECT_NE(p->IsSet(), 0);
}

TEST(ZANKnwParms, NumericValuesConvertAmongThemselves) {
  const ZANIKnwValue_var real = ZANKnwBuilder::MakeRealValue(-2.7);
  EXPECT_EQ(real->AsInteger(), -2);
  EXPECT_EQ(real->AsBoolean(), 1);
  EXPECT_EQ(ZANKnwBuilder::MakeRealValue(1e12)->AsInteger(), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(ZANKnwBuilder::MakeRealValue(-1e12)->AsInteger(), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(ZANKnwBuilder::MakeRealValue(std::nan(""))->AsInteger(), 0);
  const ZANIKnwValue_var integer = ZANKnwBuilder::MakeIntegerValue(5);
  EXPECT_EQ(integer->AsReal(), 5.0);
  EXPECT_EQ(integer->AsBoolean(), 1);
  EXPECT_EQ(ZANKnwBuilder::MakeIntegerValue(0)->AsBoolean(), 0);
  const ZANIKnwValue_var boolean = ZANKnwBuilder::MakeBooleanValue(2);
  EXPECT_EQ(boolean->AsInteger(), 2);
  EXPECT_EQ(boolean->AsReal(), 2.0);
}

TEST(ZANKnwParms, OtherReadingsGiveTheDefault) {
  const ZANIKnwValue_var text = ZANKnwBuilder::MakeStringValue("12");
  EXPECT_EQ(text->AsInteger(), 0);
  EXPECT_EQ(text->AsReal(), 0.0);
  EXPECT_EQ(text->AsBoolean(), 0);
  EXPECT_EQ(text->AsTime().Gettime_t(), 0);
  EXPECT_TRUE(text->AsObject().IsNull());
  const ZANIKnwValue_var time = ZANKnwBuilder::MakeTimeValue(ZANTime(9));
  EXPECT_EQ(Text(time->AsString()), "");
  EXPECT_EQ(time->AsInteger(), 0);
  const ZANIKnwValue_var integer = ZANKnwBuilder::MakeIntegerValue(9);
  EXPECT_EQ(Text(integer->AsString()), "");
  EXPECT_EQ(integer->AsTime().Gettime_t(), 0);
}

TEST(ZANKnwParms, ListsAreOneBased) {
  const ZANIKnwParm_var a = ZANKnwBuilder::MakeIntegerParm(1);
  const ZANIKnwParm_var b = ZANKnwBuilder::MakeIntegerParm(2);
  const ZANIList_var list = ZANKnwBuilder::MakeList({a, nullptr, b});
  EXPECT_EQ(list->Size(), 3);
  EXPECT_TRUE(list->GetElement(1) == a);
  EXPECT_TRUE(list->GetElement(2).IsNull());
  EXPECT_TRUE(list->GetElement(3) == b);
  EXPECT_TRUE(list->GetElement(0).IsNull());
  EXPECT_TRUE(list->GetElement(4).IsNull());
  EXPECT_TRUE(list->GetElement(-1).IsNull());
  EXPECT_EQ(ZANKnwBuilder::MakeList({})->Size(), 0);
}

TEST(ZANTime, HoldsSecondsSinceTheEpoch) {
  EXPECT_EQ(ZANTime().Gettime_t(), 0);
  EXPECT_EQ(ZANTime(-5).Gettime_t(), -5);
  EXPECT_TRUE(ZANTime(3) == ZANTime(3));
}

// ---------------------------------------------------------------------------------------------
// Platform value lists

TEST(ZANListVal, IndexesFromOne) {
  ZANListValZANUnicodeString names;
  EXPECT_EQ(names.Size(), 0);
  names.Append("x");
  names.Append("y");
  EXPECT_EQ(names.Size(), 2);
  EXPECT_EQ(Text(names[1]), "x");
  EXPECT_EQ(Text(names[2]), "y");
  EXPECT_THROW((void)names[0], std::out_of_range);
  EXPECT_THROW((void)names[3], std::out_of_range);
  names[1] = "z";
  EXPECT_EQ(Text(names[1]), "z");
  names.RemoveAll();
  EXPECT_EQ(names.Size(), 0);
}

// ---------------------------------------------------------------------------------------------
// Objects and attribute reads

TEST(ZANKnwObjects, FacetsDecideTheInterfaces) {
  const ZANIType_var reference = Type("GRDReference");
  const ZANBaseUnknown_var both = ZANKnwBuilder::MakeObject(reference, {});
  const ZANBaseUnknown_var instanceOnly = ZANKnwBuilder::MakeObject(reference, {}, ZANKnwObjectFacets::InstanceOnly);
  const ZANBaseUnknown_var knowledgeOnly =
      ZANKnwBuilder::MakeObject(reference, {}, ZANKnwObjectFacets::KnowledgeObjectOnly);
  EXPECT_FALSE(ZANIInstance_var(both).IsNull());
  EXPECT_FALSE(ZANIKnwObject_var(both).IsNull());
  EXPECT_FALSE(ZANIInstance_var(instanceOnly).IsNull());
  EXPECT_TRUE(ZANIKnwObject_var(instanceOnly).IsNull());
  EXPECT_TRUE(ZANIInstance_var(knowledgeOnly).IsNull());
  EXPECT_FALSE(ZANIKnwObject_var(knowledgeOnly).IsNull());
  EXPECT_EQ(ZANIInstance_var(both)->GetType().Get(), reference.Get());
  EXPECT_TRUE(ZANIInstance_var(ZANKnwBuilder::MakeObject(nullptr))->GetType().IsNull());
  // An object is neither a parameter nor a type.
  EXPECT_TRUE(ZANIKnwParm_var(both).IsNull());
  EXPECT_TRUE(ZANIType_var(both).IsNull());
}

TEST(ZANKnwObjects, AttributesCanBeReadChangedAndRemoved) {
  const ZANIKnwParm_var mass = ZANKnwBuilder::MakeRealParm(2.5);
  const ZANBaseUnknown_var object = ZANKnwBuilder::MakeObject(Type("GRDReference"), {{"Mass", mass}, {"Gap", nullptr}});
  const ZANIKnwObject_var knw(object);
  ZANIKnwParm_var read;
  EXPECT_EQ(knw->GetAttribute("Mass", read), S_OK);
  EXPECT_TRUE(read == mass);
  EXPECT_EQ(knw->GetAttribute("Gap", read), S_OK);
  EXPECT_TRUE(read.IsNull());
  read = mass;
  EXPECT_EQ(knw->GetAttribute("Nope", read), E_FAIL);
  EXPECT_TRUE(read == mass);

  const ZANListValZANUnicodeString names = knw->GetAttributeNames();
  ASSERT_EQ(names.Size(), 2);
  EXPECT_EQ(Text(names[1]), "Gap");
  EXPECT_EQ(Text(names[2]), "Mass");

  const ZANIKnwParm_var heavier = ZANKnwBuilder::MakeRealParm(9.0);
  knw->SetAttribute("Mass", heavier);
  EXPECT_EQ(knw->GetAttribute("Mass", read), S_OK);
  EXPECT_TRUE(read == heavier);
  EXPECT_EQ(knw->RemoveAttribute("Gap"), S_OK);
  EXPECT_EQ(knw->RemoveAttribute("Gap"), E_FAIL);
  EXPECT_EQ(knw->GetAttributeNames().Size(), 1);
}

TEST(ZANKnwObjectAttrReadServices, ReturnsRequestedNamesInRequestedOrderAndSkipsMissingOnes) {
  const ZANIKnwParm_var a = ZANKnwBuilder::MakeStringParm("a");
  const ZANIKnwParm_var b = ZANKnwBuilder::MakeStringParm("b");
  const ZANIKnwParm_var c = ZANKnwBuilder::MakeStringParm("c");
  const ZANIKnwObject_var object(ZANKnwBuilder::MakeObject(Type("GRDReference"), {{"A", a}, {"B", b}, {"C", c}}));
  const ZANListValZANUnicodeString requested{"C", "Missing", "A", "C"};
  ZANListValZANUnicodeString names;
  ZANListValZANIKnwParm_var parms;
  ASSERT_EQ(ZANKnwObjectAttrReadServices::GetListOfAttributes(object, requested, names, parms), S_OK);
  ASSERT_EQ(names.Size(), 3);
  ASSERT_EQ(parms.Size(), 3);
  EXPECT_EQ(Text(names[1]), "C");
  EXPECT_EQ(Text(names[2]), "A");
  EXPECT_EQ(Text(names[3]), "C");
  EXPECT_TRUE(parms[1] == c);
  EXPECT_TRUE(parms[2] == a);
  EXPECT_TRUE(parms[3] == c);
}

TEST(ZANKnwObjectAttrReadServices, AppendsToTheOutListsAndReturnsNullParameters) {
  const ZANIKnwObject_var object(ZANKnwBuilder::MakeObject(Type("GRDReference"), {{"Gap", nullptr}}));
  ZANListValZANUnicodeString names{"earlier"};
  ZANListValZANIKnwParm_var parms{ZANKnwBuilder::MakeIntegerParm(1)};
  ASSERT_EQ(ZANKnwObjectAttrReadServices::GetListOfAttributes(object, {"Gap"}, names, parms), S_OK);
  ASSERT_EQ(names.Size(), 2);
  EXPECT_EQ(Text(names[1]), "earlier");
  EXPECT_EQ(Text(names[2]), "Gap");
  ASSERT_EQ(parms.Size(), 2);
  EXPECT_TRUE(parms[2].IsNull());
}

TEST(ZANKnwObjectAttrReadServices, NullObjectFailsWithOutputsUntouched) {
  ZANListValZANUnicodeString names{"kept"};
  ZANListValZANIKnwParm_var parms;
  EXPECT_EQ(ZANKnwObjectAttrReadServices::GetListOfAttributes(nullptr, {"A"}, names, parms), E_FAIL);
  EXPECT_EQ(names.Size(), 1);
  EXPECT_EQ(parms.Size(), 0);
}

}  // namespace
